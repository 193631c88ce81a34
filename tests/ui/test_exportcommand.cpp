// Export current sheet through the main window and the seam's save dialog:
// the dialog's filter and name, a booklet's two files at the resolution
// Preferences stores, the question before replacing them, and a paper
// jacket that keeps the command off.
#include "UiFixture.h"
#include "ui/dialogs/PreferencesDialog.h"
#include <QImageReader>
#include <QPushButton>
#include <QSpinBox>

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
        w->newProjectCommand();
        QVERIFY(fixture::activate(gui, FmtJacket) && !gui.enabled("Exportshhet"));
        QVERIFY(fixture::activate(gui, FmtCdRom) && gui.enabled("Exportshhet"));
        sheets = FmtDouble;
        gui.project().setModified(false);
        w->newProjectCommand();
        jk::appSetup().files.settingsPath = dir.filePath("JEWLKIT.INI");
        PreferencesDialog prefs;
        fixture::child<QSpinBox>(&prefs, "ExportDpi")->setValue(100);
        fixture::child<QPushButton>(&prefs, "BOK")->click();

        const QString cover1 = dir.filePath("cover1.jpg"), cover2 = dir.filePath("cover2.jpg");
        gui.fake->files.saveAnswers = {dir.filePath("cover.jpg")};
        w->action("Exportshhet")->trigger();
        const FakeServices::Files::Call call = gui.fake->files.saveCalls.value(0);
        QVERIFY(call.filter.startsWith("Bitmap (*.bmp);;JPEG") && call.defaultSuffix == "bmp" && call.folder.endsWith("/Untitled.bmp"));
        for (const QString& f : {cover1, cover2})  // 123 mm at 100 dpi
            QVERIFY(QImageReader(f).format() == "jpeg" && QImageReader(f).size().width() == 485);
        // Both exist now: No leaves them; the dialog opens where the last export went.
        QVERIFY(fixture::writeFile(cover1, "kept"));
        gui.fake->files.saveAnswers = {dir.filePath("cover.jpg")};
        gui.fake->messages.answers = {jk::platform::AnswerNo};
        w->action("Exportshhet")->trigger();
        QVERIFY(gui.fake->messages.calls.value(0).text.contains(cover2) && fixture::readFile(cover1) == "kept");
        QCOMPARE(gui.fake->files.saveCalls.value(1).folder, dir.filePath("Untitled.bmp"));
    }
};

QTEST_MAIN(TestExportCommand)
#include "test_exportcommand.moc"
