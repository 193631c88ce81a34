// Tools > Calibrate printer.
#include "ui/mainwindow/MainWindow.h"
#include "ui/dialogs/CalibrationDialog.h"
#include "platform/Services.h"
#include "model/AppContext.h"
#include <QAction>
#include <QComboBox>

namespace pf = jk::platform;

void MainWindow::connectCalibrationCommands()
{
    calibrationDialog = &CalibrationDialog::run;
    connect(action("CALIBRATE"), &QAction::triggered, this, &MainWindow::calibratePrinter);
}

void MainWindow::calibratePrinter()
{
    QString printer = combo1_->currentText();
    if (printer.isEmpty())
        if (auto* p = pf::services().printers) printer = p->defaultPrinter();
    if (printer.isEmpty()) {
        if (auto* m = pf::services().messages)
            m->show(jk::texts().msg(jk::Msg::NoPrinter), jk::texts().msg(jk::Msg::CalibrationTitle), pf::Icon::Information);
        return;
    }
    calibrationDialog(this, printer);
}
