// The main window's commands: printers, nudge step, tool bar, windows, help
// and quitting.
#include "ui/mainwindow/MainWindow.h"
#include "ui/dialogs/PreferencesDialog.h"
#include "platform/Services.h"
#include "model/AppContext.h"
#include "model/Procedures.h"
#include "ui/sheet/SheetWindow.h"
#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QFileInfo>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QSlider>
#include <QToolBar>
#include <QToolButton>

namespace pf = jk::platform;

#ifndef JK_WEB_URL
#define JK_WEB_URL ""
#endif

void MainWindow::connectCommands()
{
    auto on = [this](const char* name, auto fn) { connect(action(name), &QAction::triggered, this, fn); };
    auto onButton = [this](const char* name, auto fn) { connect(button(name), &QToolButton::clicked, this, fn); };

    on("quit", [this] { quit(); });
    on("PREFERENCE", [this] {
        PreferencesDialog dlg(this);
        connect(&dlg, &PreferencesDialog::settingsWritten, this,
                [this] { if (!jk::app().settings.picturesEditor.isEmpty()) action("Picedit")->setEnabled(true); });
        dlg.exec();
    });

    // Tool bar visibility: the Tools entry checks itself; ToolHide swaps its caption.
    on("Tools", [this] { setToolBarShown(!panel_->isVisible()); });
    on("ToolHide", [this] {
        const bool hide = panel_->isVisible();
        panel_->setVisible(!hide);
        action("ToolHide")->setText(jk::texts().msg(hide ? jk::Msg::ShowToolBar : jk::Msg::HideToolBar));
    });

    // Window arrangement.
    on("WCasc", [this] { arrange(0); });
    on("WtileH", [this] { arrange(1); });
    on("WTILEV", [this] { arrange(2); });
    onButton("SSCommand8", [this] { arrange(0); });
    onButton("SSCommand9", [this] { arrange(1); });
    onButton("SSCommand10", [this] { arrange(2); });

    // Help.
    auto contents = [this] { showHelp(jk::app().files.helpFile); };
    on("Helpprog", contents);
    onButton("SSCommand11", contents);
    on("Tutorial", [this] { showHelp(QFileInfo(jk::app().files.helpFile).absolutePath() + "/tutorial.html"); });
    on("WEB", [] {
        QString url = QStringLiteral(JK_WEB_URL);
        const QUrl target = url.isEmpty() ? QUrl::fromLocalFile(jk::app().files.helpFile) : QUrl(url);
        if (auto* d = pf::services().desktop) d->openUrl(target);
    });
    on("about", [] {
        if (auto* m = pf::services().messages)
            m->about(QStringLiteral("JEWLKIT"),
                     QStringLiteral("<b>Jewelcase Studio</b><br>Version V.04.00<br><br>"
                                    "Covers, booklets, inlays and disc labels for your CDs, "
                                    "printed at real size."));
    });

    // Print button: pops up the print menu when a printer is available.
    onButton("SSCommand1", [this] {
        if (printerAvailable_)
            popup("MPRINT")->popup(button("SSCommand1")->mapToGlobal(QPoint(0, button("SSCommand1")->height())));
    });
    onButton("AddSheet", [this] {
        popup("Faction")->popup(button("AddSheet")->mapToGlobal(QPoint(0, button("AddSheet")->height())));
    });

    // Releasing an arrow button ends a picture nudge.
    for (const char* n : {"SSCommand4", "SSCommand5", "SSCommand6", "SSCommand7", "LU", "LD", "RU", "RD"})
        connect(button(n), &QToolButton::released, this, [this] { editor_.selection.pictureNudge = false; });

    // Printer box.
    connect(combo1_, &QComboBox::activated, this, [this] { changePrinter(); refresh(); });
    combo1_->installEventFilter(this);

    // Nudge step box and slider stay in step.
    connect(stepping_, &QLineEdit::textEdited, this, &MainWindow::stepChanged);
    connect(slider_, &QSlider::valueChanged, this, [this](int v) {
        if (updatingStep_) return;
        const QString text = QString::number(qMin(v, 999));
        stepping_->setText(text);
        stepChanged(text);
    });
}

bool MainWindow::eventFilter(QObject* watched, QEvent* e)
{
    // The printer box applies its printer when it gets the focus, too.
    if (watched == combo1_ && e->type() == QEvent::FocusIn) {
        changePrinter();
        refresh();
    }
    return QMainWindow::eventFilter(watched, e);
}

void MainWindow::stepChanged(const QString& text)
{
    if (text.trimmed().isEmpty()) return;  // still typing
    const jk::StepResult r = jk::stepRule(text);
    if (r.notice) {
        if (auto* m = pf::services().messages)
            m->show(jk::texts().msg(jk::Msg::EnterWholeNumber) + QStringLiteral(" (1-999)"), QString(), pf::Icon::Information);
        stepping_->setText(QStringLiteral("10"));
    }
    editor_.selection.nudgeStep = r.step;
    updatingStep_ = true;
    slider_->setValue(r.step);
    updatingStep_ = false;
}

void MainWindow::setToolBarShown(bool shown)
{
    panel_->setVisible(shown);
    action("Tools")->setChecked(shown);
}

void MainWindow::fillPrinterBox()
{
    combo1_->clear();
    auto* p = pf::services().printers;
    if (!p) return;
    combo1_->addItems(p->printers());
    combo1_->setCurrentIndex(combo1_->findText(p->defaultPrinter()));
}

void MainWindow::changePrinter()
{
    const QString name = combo1_->currentText();
    auto* p = pf::services().printers;
    if (name.isEmpty() || !p || p->defaultPrinter() == name) return;
    QString error;
    if (!p->setDefaultPrinter(name, &error)) {
        if (auto* m = pf::services().messages)
            m->show(QStringLiteral("SetPrinterFailed. Error code: ") + error, QString(), pf::Icon::None);
    }
}

void MainWindow::updatePrinterAvailability()
{
    printerAvailable_ = jk::printerAvailable();
    button("SSCommand1")->setEnabled(printerAvailable_);
    for (const char* n : {"MFPrnSelect", "imprime", "IMPPRJ", "PRNSELECT", "PRINTPREVIEW", "PRTFNTCAT", "PRTPICCAT"})
        action(n)->setEnabled(printerAvailable_);
}

std::vector<SheetWindow*> MainWindow::sheets() const
{
    std::vector<SheetWindow*> out;
    for (QMdiSubWindow* w : mdi_->subWindowList(QMdiArea::CreationOrder))
        if (auto* s = qobject_cast<SheetWindow*>(w->widget())) out.push_back(s);
    return out;
}

void MainWindow::refresh() { update(); }

void MainWindow::restoreSheetWindows()
{
    const auto list = mdi_->subWindowList(QMdiArea::CreationOrder);
    for (auto it = list.rbegin(); it != list.rend(); ++it) (*it)->showNormal();
}

void MainWindow::arrange(int how)
{
    restoreSheetWindows();
    if (how == 0) {
        mdi_->cascadeSubWindows();
        return;
    }
    // Horizontal tiling stacks the windows one above the other; vertical
    // tiling puts them side by side.
    const auto list = mdi_->subWindowList(QMdiArea::CreationOrder);
    if (list.isEmpty()) return;
    const QRect area = mdi_->viewport()->rect();
    const int n = int(list.size());
    for (int i = 0; i < n; ++i) {
        QRect r = how == 1 ? QRect(0, area.height() * i / n, area.width(), area.height() / n)
                           : QRect(area.width() * i / n, 0, area.width() / n, area.height());
        list.at(i)->setGeometry(r);
    }
}

void MainWindow::showHelp(const QString& page)
{
    if (auto* h = pf::services().help) h->show(page);
}

void MainWindow::quit()
{
    combo1_->setCurrentIndex(combo1_->findText(savedPrinterName_));
    changePrinter();
    shutDown();
}

bool MainWindow::shutDown()
{
    if (project_.isModified()) {
        const jk::Texts& t = jk::texts();
        const QString text = t.msg(project_.fileName().isEmpty() ? jk::Msg::SaveUnsavedProject : jk::Msg::SaveChanges);
        int answer = pf::AnswerCancel;
        if (auto* m = pf::services().messages)
            answer = m->show(text, t.msg(jk::Msg::Warning), pf::Icon::Question, pf::Buttons::YesNoCancel);
        if (answer == pf::AnswerCancel) return false;
        if (answer == pf::AnswerYes && !saveProject()) return false;
    }
    quitting_ = true;
    // Sheets refuse a close from their frame; quitting is the one time they may.
    SheetWindow::mayClose = true;
    const auto list = mdi_->subWindowList(QMdiArea::CreationOrder);
    for (auto it = list.rbegin(); it != list.rend(); ++it) (*it)->close();
    if (auto* h = pf::services().help) h->quit();
    close();
    QCoreApplication::quit();
    return true;
}

void MainWindow::closeEvent(QCloseEvent* e)
{
    // Closing the frame runs quit, with its question about unsaved changes.
    if (quitting_) {
        e->accept();
        return;
    }
    e->ignore();
    quit();
}
