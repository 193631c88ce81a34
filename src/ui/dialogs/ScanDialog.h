#pragma once
// The scan dialog: device, colour mode and resolution, a quick preview on
// which the user drags the area to scan, then the scan itself with a
// progress bar and Cancel. The device works on the scanner thread, so the
// dialog answers the user all along. And the little list of Select source.
#include "platform/Scanner.h"
#include <QDialog>
#include <QImage>
#include <QList>
#include <QRectF>
#include <optional>

class QComboBox;
class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;

// The scanner's whole area with the last preview on it; the user drags the
// area to scan over it. The area is kept in millimetres.
class ScanAreaView : public QWidget {
    Q_OBJECT
public:
    explicit ScanAreaView(QWidget* parent = nullptr);

    // A new device: its whole area, no preview, all of it chosen.
    void setWholeArea(const QRectF& mm);
    void setPreview(const QImage& image);  // covering the whole area
    QRectF wholeArea() const { return whole_; }
    const QImage& preview() const { return preview_; }
    // What to scan; the whole area until the user drags.
    QRectF selection() const { return selection_.isEmpty() ? whole_ : selection_; }
    void setSelection(const QRectF& mm);

Q_SIGNALS:
    void selectionChanged();

protected:
    void paintEvent(QPaintEvent* e) override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;

private:
    QRectF page() const;  // where the whole area lies on the widget
    QPointF toMm(const QPointF& p) const;
    QRectF toWidget(const QRectF& mm) const;

    QRectF whole_;
    QRectF selection_;
    QImage preview_;
    std::optional<QPointF> dragFrom_;
};

struct ScannedPicture {
    QImage image;
    QString device;  // the device it came from
};

class ScanDialog : public QDialog {
    Q_OBJECT
public:
    // Opens the preferred device when listed, else the first.
    ScanDialog(const QList<jk::platform::ScanDevice>& devices, const QString& preferred, QWidget* parent = nullptr);

    // Shows the dialog modally: the scanned picture, or nullopt when the
    // user closed it without scanning.
    static std::optional<ScannedPicture> acquire(QWidget* parent, const QList<jk::platform::ScanDevice>& devices,
                                                 const QString& preferred);

    const QImage& image() const { return image_; }
    QString device() const;
    jk::platform::ScannerSession* session() const { return session_; }
    ScanAreaView* areaView() const { return area_; }

    void preview();  // a quick look at the whole area
    void scan();     // the chosen area at the chosen resolution
    // Cancel: stops a running scan; otherwise closes the dialog.
    void cancelOrClose();
    void reject() override;

Q_SIGNALS:
    // The device is open and its choices are on show.
    void ready();

private:
    void openDevice();
    void deviceOpened(const jk::platform::ScanOptions& options);
    void scanned(const QImage& image);
    void failed(jk::platform::ScanFault fault, const QString& detail);
    void start(const jk::platform::ScanRequest& request, bool preview);
    void setBusy(bool busy);
    void showPixelSize();
    int chosenResolution() const;

    QList<jk::platform::ScanDevice> devices_;
    jk::platform::ScannerSession* session_;
    QComboBox* deviceBox_;
    QComboBox* modeBox_;
    QComboBox* resolutionBox_;
    QLabel* sizeLabel_;
    ScanAreaView* area_;
    QProgressBar* progress_;
    QPushButton* previewButton_;
    QPushButton* scanButton_;
    QPushButton* cancelButton_;
    bool previewing_ = false;
    QImage image_;
};

// Select source: the devices by vendor and model; the chosen device's name,
// or nullopt after Cancel.
class ScanSourceDialog : public QDialog {
    Q_OBJECT
public:
    ScanSourceDialog(const QList<jk::platform::ScanDevice>& devices, const QString& current, QWidget* parent = nullptr);
    static std::optional<QString> choose(QWidget* parent, const QList<jk::platform::ScanDevice>& devices,
                                         const QString& current);
    QListWidget* list() const { return list_; }
    QString chosen() const;

private:
    QListWidget* list_;
};
