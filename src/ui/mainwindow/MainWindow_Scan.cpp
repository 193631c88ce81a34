// Select source: which SANE device the picture dialog's scans start with.
#include "ui/mainwindow/MainWindow.h"
#include "ui/dialogs/ScanDialog.h"
#include "file/Settings.h"
#include "model/AppContext.h"
#include "platform/Scanner.h"
#include "platform/Services.h"
#include <QAction>
#include <QApplication>

namespace pf = jk::platform;

void MainWindow::connectScanCommands()
{
    // Built without SANE, there is nothing to choose from.
    action("ScanSel")->setEnabled(pf::scanningAvailable());
    connect(action("ScanSel"), &QAction::triggered, this, &MainWindow::selectScanSource);
}

void MainWindow::selectScanSource()
{
    // Looked for afresh (a scanner may have been plugged in since), on the
    // scanner thread: network backends can take seconds.
    action("ScanSel")->setEnabled(false);
    QApplication::setOverrideCursor(Qt::BusyCursor);
    pf::findScanDevices(
        this,
        [this](const QList<pf::ScanDevice>& devices) {
            QApplication::restoreOverrideCursor();
            action("ScanSel")->setEnabled(true);
            if (devices.isEmpty()) {
                if (auto* m = pf::services().messages)
                    m->show(jk::texts().msg(jk::Msg::NoScanner), jk::texts().msg(jk::Msg::ProgramTitle),
                            pf::Icon::Information);
                return;
            }
            const QString current = jk::app().settings.scannerSource;
            const std::optional<QString> chosen = ScanSourceDialog::choose(this, devices, current);
            if (!chosen || *chosen == current) return;
            jk::appSetup().settings.scannerSource = *chosen;
            jk::saveAppSettings();
        },
        true);
}
