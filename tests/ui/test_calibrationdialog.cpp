// The calibration dialog and the Preferences section: measured values, a bad
// one refused, ±0.1 steps, printing with what is shown, storing; resetting a
// printer that is gone.
#include "UiFixture.h"
#include "ui/dialogs/CalibrationDialog.h"
#include "ui/dialogs/PreferencesDialog.h"
#include "file/Settings.h"
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QTreeWidget>

using fixture::child;

class TestCalibrationDialog : public QObject {
    Q_OBJECT
    QTemporaryDir home;

private Q_SLOTS:
    void measureStepPrintStore()
    {
        fixture::Dialog<CalibrationDialog> t;
        jk::appSetup().files.settingsPath = home.filePath("JEWLKIT.INI");
        jk::appSetup().settings.calibrations.insert("Office", {1, -1, 101, 99});
        CalibrationDialog* d = t.open("Office");
        d->target().pdfPath = home.filePath("page.pdf");
        // A true printer measured on a page printed with the stored values.
        const char* boxes[] = {"CrossLeft", "CrossTop", "RulerAcross", "RulerDown"};
        const QStringList typed = {"31.3", "28,7", "151.5", "148.5 mm"};
        for (int i = 0; i < 4; ++i) child<QLineEdit>(d, boxes[i])->setText(typed[i]);
        t.click("Compute");
        QVERIFY(d->values().isIdentity());
        child<QLineEdit>(d, "RulerDown")->setText("abc");
        t.click("Compute");
        QVERIFY(t.fake->messages.calls.last().text.contains("Vertical ruler") && child<QLineEdit>(d, "RulerDown")->hasFocus());
        QTest::keyClick(child<QDoubleSpinBox>(d, "ScaleY"), Qt::Key_Up);
        t.click("PrintPage");
        QVERIFY(QFile::exists(home.filePath("page.pdf")) && child<QLabel>(d, "PrintedWith")->text().contains("100.10"));
        t.click("OK");
        const jk::PrinterCalibration stored = jk::readSettings(home.filePath("JEWLKIT.INI"), {}).calibrations.value("Office");
        QVERIFY(stored.offsetXMm == 0 && stored.scaleYPercent == 100.1);
    }

    void preferencesResetAGonePrinter()
    {
        fixture::Dialog<PreferencesDialog> t;
        t.fake->printers.list = {"Office"};
        jk::appSetup().settings.calibrations = {{"Gone", {2, 0, 100, 100}}, {"Office", {1, 0, 100, 100}}};
        auto* list = child<QTreeWidget>(t.open(), "Calibrations");
        QTreeWidgetItem* gone = list->findItems("Gone", Qt::MatchExactly).value(0);
        QVERIFY(list->topLevelItemCount() == 2 && gone && gone->toolTip(0).contains("Gone"));
        list->setCurrentItem(gone);
        t.click("ResetCalibration");
        QVERIFY(jk::app().settings.calibrations.keys() == QStringList{"Office"} && list->topLevelItemCount() == 1);
    }
};

QTEST_MAIN(TestCalibrationDialog)
#include "test_calibrationdialog.moc"
