// Export current sheet through the main window and the seam's save dialog:
// the dialog's filter and name, a booklet's two files at the resolution
// Preferences stores, the question before replacing them, and a paper jacket that
// keeps the command off.
#include "UiFixture.h"
#include "ui/dialogs/PreferencesDialog.h"
#include <QImageReader>
#include <QPushButton>
#include <QSpinBox>
#include <QtMath>

namespace pf = jk::platform;
using jk::FmtCdRom, jk::FmtDouble, jk::FmtJacket;

class TestExportCommand : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void exportsTheActiveSheet()
    {
        fixture::Gui gui;
        QTemporaryDir dir;
        MainWindow* w = gui.w.get();
        int sheets = FmtCdRom | FmtJacket;
        w->newProjectDialog = [&](QWidget*) { return NewProjectChoice{NewProjectDialog::Create, sheets, {}}; };
        w->show();
        w->newProjectCommand();
        QVERIFY(fixture::activate(gui, FmtJacket) && !gui.enabled("Exportshhet"));
        QVERIFY(fixture::activate(gui, FmtCdRom) && gui.enabled("Exportshhet"));

        sheets = FmtDouble;
        gui.project().setModified(false);
        w->newProjectCommand();
        gui.project().addText(true, fixture::textAt(FmtDouble, "Track one", {300, 300, 3000, 400}));
        // The resolution as Preferences stores it.
        jk::appSetup().files.settingsPath = dir.filePath("JEWLKIT.INI");
        PreferencesDialog prefs;
        fixture::child<QSpinBox>(&prefs, "ExportDpi")->setValue(100);
        fixture::child<QPushButton>(&prefs, "BOK")->click();
        QVERIFY(fixture::readFile(dir.filePath("JEWLKIT.INI")).contains("exportdpi=100"));
        const QString cover1 = dir.filePath("cover1.jpg"), cover2 = dir.filePath("cover2.jpg");
        gui.fake->files.saveAnswers = {dir.filePath("cover.jpg")};
        w->action("Exportshhet")->trigger();
        const FakeServices::Files::Call call = gui.fake->files.saveCalls.value(0);
        QVERIFY2(call.filter.startsWith("Bitmap (*.bmp);;JPEG") && call.filter.endsWith("SVG (*.svg)"), qPrintable(call.filter));
        QVERIFY(call.defaultSuffix == "bmp" && call.folder.endsWith("/Untitled.bmp"));
        for (const QString& f : {cover1, cover2}) {
            QImageReader r(f);
            QVERIFY(r.format() == "jpeg" && r.size().width() == qCeil(123 / 2.54 * 10));
        }

        // Both exist now: No leaves them as they are, Yes replaces them;
        // the dialog opens where the last export went.
        QVERIFY(fixture::writeFile(cover1, "kept"));
        gui.fake->files.saveAnswers = {dir.filePath("cover.jpg"), dir.filePath("cover.jpg")};
        gui.fake->messages.answers = {pf::AnswerNo, pf::AnswerYes};
        w->action("Exportshhet")->trigger();
        QVERIFY(gui.fake->messages.calls.value(0).text.contains(QDir::toNativeSeparators(cover2)));
        QCOMPARE(fixture::readFile(cover1), QByteArray("kept"));
        w->action("Exportshhet")->trigger();
        QCOMPARE(QImageReader(cover1).format(), QByteArray("jpeg"));
        QCOMPARE(gui.fake->files.saveCalls.value(2).folder, dir.filePath("Untitled.bmp"));
    }
};

QTEST_MAIN(TestExportCommand)
#include "test_exportcommand.moc"
