#pragma once
// Tools > Calibrate printer: one printer's calibration. The calibration page
// is printed with the values shown; what the user measured on it gives new
// values (Compute), which can also be typed or stepped by 0.1 mm / 0.1 %.
// OK stores them for that printer in JEWLKIT.INI (no calibration at all
// when they change nothing); Cancel keeps the stored ones.
#include "model/AppContext.h"
#include "output/PageDevice.h"
#include <QDialog>
#include <QGroupBox>

class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

class CalibrationDialog : public QDialog {
    Q_OBJECT
public:
    CalibrationDialog(const QString& printer, QWidget* parent = nullptr);

    // Prints the calibration page on the printer, then asks. True when a
    // calibration was stored.
    static bool run(QWidget* parent, const QString& printer);

    // The values shown.
    jk::PrinterCalibration values() const;
    void setValues(const jk::PrinterCalibration& c);
    // Where the calibration page goes: the printer; tests send it to a PDF.
    jk::print::PrintTarget& target() { return target_; }

    // The page with the values shown; a failure is reported. True when printed.
    bool printPage();
    // Turns the measurements into values; a bad one is reported and focused.
    bool compute();

private:
    void store();

    QString printer_;
    jk::print::PrintTarget target_;
    jk::PrinterCalibration printedWith_;  // what the measured page was printed with
    QLineEdit* measured_[4];
    QDoubleSpinBox* value_[4];  // offset across, down; scale across, down
    QLabel* printedLabel_;
};

// The Preferences dialog's section: each installed or calibrated printer with
// its calibration (greyed when the printer is gone), and Reset, which drops
// the chosen one's at once from the settings (as the other preferences
// change: for this run, in JEWLKIT.INI when the dialog is confirmed).
class CalibrationList : public QGroupBox {
    Q_OBJECT
public:
    explicit CalibrationList(QWidget* parent = nullptr);

private:
    void fill();
    void resetChosen();

    QTreeWidget* list_;
    QPushButton* reset_;
};
