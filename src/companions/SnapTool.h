#pragma once
// snaptool: takes a picture of the whole screen, of one window or of an
// area dragged out with the mouse, after an optional delay, and saves it as
// JPEG, PNG or BMP into the pictures folder under a proposed name.
#include <QDateTime>
#include <QImage>
#include <QList>
#include <QRect>
#include <QString>
#include <QWidget>

class QButtonGroup;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace jk::snap {

class PortalScreenshot;

enum class Mode { Screen = 0, Window = 1, Area = 2 };

// The formats a picture is saved in: JPEG first, since the picture dialog
// and the catalogue list it (PNG they do not).
struct SaveFormat {
    const char* label;
    const char* suffix;  // without the dot
};
const QList<SaveFormat>& saveFormats();

// "capture-YYYYMMDD-HHMMSS.<suffix>", with "-2", "-3"... when the folder
// already holds that name.
QString proposedName(const QString& folder, const QDateTime& when, const QString& suffix);

// Writes the picture in the format its suffix names. Nothing is left under
// that name when writing fails (the old file, if any, stays whole); false
// with the reason.
bool savePicture(const QImage& picture, const QString& path, QString* error);

// A frozen picture of the desktop over the whole screen: the user drags out
// an area, or clicks one of the windows given; Escape or the right button
// cancels.
class RegionPicker : public QWidget {
    Q_OBJECT
public:
    // windows: in the picture's pixels, topmost first; empty: drag an area.
    RegionPicker(const QImage& desktop, const QList<QRect>& windows);
    void start();

Q_SIGNALS:
    void picked(const QRect& inPicture);
    void cancelled();

protected:
    void paintEvent(QPaintEvent* e) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;
    void keyPressEvent(QKeyEvent* e) override;

private:
    QRect toPicture(const QRectF& onScreen) const;
    QRectF toScreen(const QRect& inPicture) const;
    QRect windowAt(const QPointF& onScreen) const;

    QImage desktop_;
    QList<QRect> windows_;
    QPointF from_, to_;
    bool dragging_ = false;
    QRect hovered_;
};

class SnapWindow : public QWidget {
    Q_OBJECT
public:
    // report: a file the path of every saved picture is appended to (the
    // main program reads it); empty for none.
    explicit SnapWindow(const QString& report, QWidget* parent = nullptr);
    ~SnapWindow() override;

    void take();
    // Saves the picture under the folder and name shown; closes the window
    // when that worked.
    bool save();
    const QImage& picture() const { return picture_; }
    void setPicture(const QImage& picture);

private:
    Mode mode() const;
    void grab();
    void gotDesktop(const QImage& desktop, const QList<QRect>& windows, bool chosenByDesktop);
    void comeBack();
    void failed(const QString& why);
    void formatChosen();
    void rememberChoices() const;

    QString report_;
    QImage picture_;
    PortalScreenshot* portal_ = nullptr;
    QButtonGroup* modes_;
    QSpinBox* delay_;
    QPushButton* takeButton_;
    QLabel* preview_;
    QLineEdit* folder_;
    QLineEdit* name_;
    QComboBox* format_;
    QPushButton* saveButton_;
};

}  // namespace jk::snap
