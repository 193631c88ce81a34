#pragma once
// The preferences dialog: the picture editor and the three working folders,
// and each printer's calibration (CalibrationList, Reset only).
// Values change only through the browse panel (the edit boxes are never read
// back), straight into the application's settings (jk::appSetup()); OK
// also stores them in JEWLKIT.INI, Cancel keeps them for this run only.
// The export resolution is read from its box on OK only.
#include <QDialog>

class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class DriveFolderFileTrio;

class PreferencesDialog : public QDialog {
    Q_OBJECT
public:
    explicit PreferencesDialog(QWidget* parent = nullptr);

    // 0 until an edit box was clicked, then 1 (editor) to 4 (project folder).
    int browseTarget() const { return target_; }

Q_SIGNALS:
    // The settings file was written (whether or not the write succeeded).
    void settingsWritten();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void selectTarget(int target);
    void openPanel();
    void acceptPanel();
    void closePanel();
    void writeAndClose();

    QLineEdit* text_[4];
    QPushButton *browse_, *ok_, *cancel_;
    QFrame* frame_;
    DriveFolderFileTrio* trio_;
    QSpinBox* exportDpi_;  // export resolution, stored on OK
    int target_ = 0;
    bool centred_ = false;
};
