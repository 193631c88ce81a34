// Tools > Calibrate printer and the Preferences section: the dialog prints
// with the values shown, turns measurements into values, refuses bad ones,
// steps by 0.1 and stores per printer; Preferences resets a printer's
// calibration, also one of a printer that is gone.
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
    void measureStepAndStore()
    {
        fixture::Dialog<CalibrationDialog> t;
        jk::appSetup().files.settingsPath = home.filePath("JEWLKIT.INI");
        jk::appSetup().settings.calibrations.insert("Office", {1, -1, 101, 99});
        CalibrationDialog* d = t.open("Office");
        d->target().pdfPath = home.filePath("page.pdf");
        auto type = [&](const char* box, const QString& text) { child<QLineEdit>(d, box)->setText(text); };

        // A true printer measured on a page printed with the stored values:
        // nothing to make up for.
        type("CrossLeft", "31.3");
        type("CrossTop", "28,7");
        type("RulerAcross", "151.5");
        type("RulerDown", "148.5 mm");
        t.click("Compute");
        QVERIFY(d->values().isIdentity());

        // A bad measurement is named and focused; the values stay.
        type("RulerDown", "abc");
        t.click("Compute");
        QVERIFY(t.fake->messages.calls.last().text.contains("Vertical ruler"));
        QVERIFY(child<QLineEdit>(d, "RulerDown")->hasFocus());

        // Printed with what is shown; then measured against that.
        QTest::keyClick(child<QDoubleSpinBox>(d, "ScaleY"), Qt::Key_Up);
        t.click("PrintPage");
        QVERIFY(QFile::exists(home.filePath("page.pdf")));
        QVERIFY(child<QLabel>(d, "PrintedWith")->text().contains("100.10"));

        t.click("OK");
        const jk::PrinterCalibration stored = jk::readSettings(home.filePath("JEWLKIT.INI"), {}).calibrations.value("Office");
        QVERIFY(stored.offsetXMm == 0 && stored.scaleYPercent == 100.1);
    }

    void preferencesResetEvenAGonePrinter()
    {
        fixture::Dialog<PreferencesDialog> t;
        t.fake->printers.list = {"Office"};
        jk::appSetup().settings.calibrations.insert("Gone", {2, 0, 100, 100});
        jk::appSetup().settings.calibrations.insert("Office", {1, 0, 100, 100});
        t.open();
        auto* list = child<QTreeWidget>(t.dialog.get(), "Calibrations");
        QCOMPARE(list->topLevelItemCount(), 2);
        QTreeWidgetItem* gone = list->findItems("Gone", Qt::MatchExactly).value(0);
        QVERIFY(gone && gone->toolTip(0).contains("Gone"));
        list->setCurrentItem(gone);
        t.click("ResetCalibration");
        QCOMPARE(jk::app().settings.calibrations.keys(), QStringList{"Office"});
        QCOMPARE(list->topLevelItemCount(), 1);
    }
};

QTEST_MAIN(TestCalibrationDialog)
#include "test_calibrationdialog.moc"
