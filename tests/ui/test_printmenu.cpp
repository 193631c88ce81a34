// The print commands of the main window: the three print dialogs on their
// own, the printer choice that quitting undoes, and (under
// with_private_cupsd.sh) project and selected-sheet runs through the menu
// onto a cups-pdf queue, read back from the PDF it writes.
#include "UiFixture.h"
#include "../output/PrintProjects.h"
#include <QCheckBox>
#include <QComboBox>
#include <QDirIterator>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include "model/Numbering.h"
#include <pwd.h>
#include <unistd.h>

namespace pf = jk::platform;
using jk::print::DiscStock;
using namespace printfixture;

class TestPrintMenu : public QObject {
    Q_OBJECT
    QTemporaryDir tmp;
    const std::vector<DiscStock> stocks{{"Avery L6015 (A4, 2 per sheet)", 45, 19.5, "A4"},
                                        {"Avery 5824 (US-Letter, 2 per sheet)", 48, 21, "Letter"},
                                        {"Herma 4093 (A4, 2 per sheet)", 45, 20, "A4 Herma"}};

    // The PDF cups-pdf wrote for a job whose title holds `stem`.
    static QString cupsPdf(const QString& stem)
    {
        const passwd* pw = getpwuid(getuid());
        QDirIterator it(QString::fromLocal8Bit(pw ? pw->pw_dir : "/root") + "/PDF", {"*" + stem + "*.pdf"}, QDir::Files);
        return it.hasNext() ? it.next() : QString();
    }

private Q_SLOTS:
    void dialogsOnTheirOwn()
    {
        fixture::Dialog<QWidget> seam;
        seam.fake->printers.list = {"Office", "Photo"};
        seam.fake->printers.defaultName = "Office";

        // Form1: the copies box rounds halves to even; choosing a printer
        // counts at once; Cancel prints nothing whatever was typed.
        QStringList chosen;
        auto copies = [&](const QString& typed, const char* button, const QString& printer = {}) {
            fixture::whenModal<QDialog>([&](QDialog* d) {
                if (!printer.isEmpty()) fixture::child<QComboBox>(d, "Combo1")->textActivated(printer);
                fixture::child<QLineEdit>(d, "Text1")->setText(typed);
                fixture::clickAll(d, button);
            });
            return PrinterDialog::run(nullptr, [&](const QString& name) { chosen << name; });
        };
        QCOMPARE(copies("3.5", "Command1").copies, 4);
        QCOMPARE(copies("2.5", "Command1", "Photo").copies, 2);
        QCOMPARE(chosen, QStringList{"Photo"});
        QCOMPARE(copies("7", "Command2").copies, 0);
        QCOMPARE(copies("many", "Command1").copies, 0);

        // SELPFRM: booklet and inlay offered and ticked; a repaint keeps the
        // user's unticking; nothing ticked, no OK; closing prints nothing.
        fixture::whenModal<QDialog>([](QDialog* d) {
            auto* booklet = fixture::child<QCheckBox>(d, "Check1");
            QVERIFY(booklet->isChecked() && booklet->isEnabled() && !fixture::child<QCheckBox>(d, "Check4")->isEnabled());
            booklet->click();
            d->repaint();
            QVERIFY(!booklet->isChecked());
            fixture::child<QCheckBox>(d, "Check3")->click();
            QVERIFY(!fixture::child<QPushButton>(d, "Command1")->isEnabled());
            booklet->click();
            fixture::clickAll(d, "Command1");
        });
        QCOMPARE(SheetSelectionDialog::run(nullptr, 9), 1);
        fixture::whenModal<QDialog>([](QDialog* d) { fixture::clickAll(d, "Escape"); });
        QCOMPARE(SheetSelectionDialog::run(nullptr, 9), 0);

        // CDCHOOSE: the stock chosen last is preselected (else the first);
        // the filter moves the selection off hidden stocks; Cancel keeps
        // the last selected stock with answer 2; closing answers 0.
        fixture::whenModal<QDialog>([](QDialog* d) {
            auto* list = fixture::child<QListWidget>(d, "List1");
            QCOMPARE(list->currentRow(), 2);
            fixture::child<QLineEdit>(d, "Filter")->setText("letter");
            QCOMPARE(list->currentRow(), 1);
            fixture::child<QCheckBox>(d, "SSCheck1")->setChecked(true);
            fixture::clickAll(d, "Command1");
        });
        DiscStockChoice c = DiscStockDialog::run(nullptr, stocks, "Herma 4093 (A4, 2 per sheet)");
        QVERIFY(c.answer == DiscStockChoice::Ok && c.stock.xMm == 48 && c.keepBackground);
        fixture::whenModal<QDialog>([](QDialog* d) {
            QCOMPARE(fixture::child<QListWidget>(d, "List1")->currentRow(), 0);
            fixture::child<QListWidget>(d, "List1")->setCurrentRow(1);
            fixture::clickAll(d, "Command2");
        });
        c = DiscStockDialog::run(nullptr, stocks, "gone");
        QVERIFY(c.answer == DiscStockChoice::Cancelled && c.stock.yMm == 21 && !c.keepBackground);
        fixture::whenModal<QDialog>([](QDialog* d) { fixture::clickAll(d, "Escape"); });
        QCOMPARE(DiscStockDialog::run(nullptr, stocks, {}).answer, DiscStockChoice::Closed);
    }

    void quittingRestoresThePrinterOfTheLastPrintDialog()
    {
        fixture::Gui gui;
        gui.fake->printers.list = {"Office", "Photo"};
        gui.fake->printers.defaultName = "Office";
        gui.w->fillPrinterBox();
        gui.w->updatePrinterAvailability();
        gui.project().reset(jk::TableSizing::NewProject);
        gui.w->createSheet(jk::FmtSimple);
        gui.w->setSavedPrinter("Photo");
        // Choosing in Form1 makes "Photo" the default; the dialog's opening
        // saved "Office" to come back to; Cancel prints nothing.
        fixture::whenModal<QDialog>([](QDialog* d) {
            fixture::child<QComboBox>(d, "Combo1")->textActivated("Photo");
            fixture::clickAll(d, "Command2");
        });
        gui.w->action("IMPPRJ")->trigger();
        QCOMPARE(gui.fake->printers.defaultName, QString("Photo"));
        QCOMPARE(gui.w->printerBox()->currentText(), QString("Photo"));
        gui.w->quit();
        QCOMPARE(gui.fake->printers.defaultName, QString("Office"));
    }

    void menuRunsOnACupsQueue()
    {
        if (qgetenv("JK_PRINTER_SETUP") != "cupsd") QSKIP("runs under with_private_cupsd.sh");
        fixture::Gui gui;
        gui.fake->printers.list = {"TEST-PDF", "TEST-PDF2"};
        gui.fake->printers.defaultName = "TEST-PDF";
        const QString stem = QStringLiteral("menurun%1").arg(QCoreApplication::applicationPid());
        const QString prj = tmp.filePath(stem + ".prj");
        QVERIFY(writeNumbered(numberedBooklet({}, jk::FmtDouble | jk::FmtCdRom), prj, 7));
        gui.w->startProject(prj);
        gui.w->updatePrinterAvailability();
        QCOMPARE(gui.project().printWeights(), 3);

        int stockAsks = 0;
        gui.w->copiesDialog = [](MainWindow*) { return PrinterChoice{3, "TEST-PDF2", "TEST-PDF"}; };
        gui.w->discStockDialog = [&](QWidget*, const std::vector<DiscStock>& list, const QString&) {
            ++stockAsks;
            return DiscStockChoice{DiscStockChoice::Ok, list.front(), false};
        };
        gui.w->action("IMPPRJ")->trigger();
        QString pdf;
        QTRY_VERIFY_WITH_TIMEOUT(!(pdf = cupsPdf(stem)).isEmpty() && tool("pdfinfo", {pdf}).contains("Pages:           6"),
                                 30000);
        // Booklet then disc, a copy after the other, each copy numbered on.
        QCOMPARE(QStringList({pageText(pdf, 1).simplified(), pageText(pdf, 3).simplified(), pageText(pdf, 5).simplified()}),
                 QStringList({"07", "08", "09"}));
        QCOMPARE(jk::numFieldText(gui.project(), 1), QString("10"));
        QCOMPARE(jk::app().settings.discStock, stocks.front().name);

        // Selected sheets with the stock dialog closed: message 26, and only
        // the booklet prints, numbered on from 10.
        QFile::remove(pdf);
        gui.w->sheetSelectionDialog = [](QWidget*, int) { return 3; };
        gui.w->copiesDialog = [](MainWindow*) { return PrinterChoice{1, "TEST-PDF", "TEST-PDF"}; };
        gui.w->discStockDialog = [&](QWidget*, const std::vector<DiscStock>&, const QString&) {
            return DiscStockChoice{};
        };
        gui.w->action("PRNSELECT")->trigger();
        QCOMPARE(gui.fake->messages.calls.last().text, jk::texts().msg(jk::Msg::NoLabelStock));
        QTRY_VERIFY_WITH_TIMEOUT(!(pdf = cupsPdf(stem)).isEmpty() && tool("pdfinfo", {pdf}).contains("Pages:           1"),
                                 30000);
        QCOMPARE(pageText(pdf, 1).simplified(), QString("10"));
        QFile::remove(pdf);
    }
};

QTEST_MAIN(TestPrintMenu)
#include "test_printmenu.moc"
