#include "ui/dialogs/CalibrationDialog.h"
#include "output/Calibration.h"
#include "file/Settings.h"
#include "platform/Services.h"
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

void report(const QString& text)
{
    if (auto* m = jk::platform::services().messages)
        m->show(text, jk::texts().msg(jk::Msg::CalibrationTitle), jk::platform::Icon::Warning);
}

}  // namespace

CalibrationDialog::CalibrationDialog(const QString& printer, QWidget* parent) : QDialog(parent), printer_(printer)
{
    const jk::Texts& t = jk::texts();
    setObjectName("Calibration");
    setWindowTitle(t.msg(jk::Msg::CalibrationTitle) + QStringLiteral(": ") + printer);
    target_.printer = printer;
    printedWith_ = jk::print::storedCalibration(printer);

    auto* layout = new QVBoxLayout(this);
    auto* printRow = new QHBoxLayout;
    auto* print = new QPushButton(t.msg(jk::Msg::CalibrationPrintPage), this);
    print->setObjectName("PrintPage");
    printedLabel_ = new QLabel(this);
    printedLabel_->setObjectName("PrintedWith");
    printRow->addWidget(print);
    printRow->addWidget(printedLabel_, 1);
    layout->addLayout(printRow);

    auto* measuredBox = new QGroupBox(t.msg(jk::Msg::CalibrationMeasured), this);
    auto* form = new QFormLayout(measuredBox);
    const char* names[] = {"CrossLeft", "CrossTop", "RulerAcross", "RulerDown"};
    const jk::Msg labels[] = {jk::Msg::MeasureCrossLeft, jk::Msg::MeasureCrossTop, jk::Msg::MeasureRulerAcross,
                              jk::Msg::MeasureRulerDown};
    const double nominal[] = {jk::print::kCrossAMm, jk::print::kCrossAMm, jk::print::kRulerMm, jk::print::kRulerMm};
    for (int i = 0; i < 4; ++i) {
        measured_[i] = new QLineEdit(measuredBox);
        measured_[i]->setObjectName(names[i]);
        measured_[i]->setPlaceholderText(QString::number(nominal[i]));
        form->addRow(t.msg(labels[i]), measured_[i]);
    }
    auto* computeButton = new QPushButton(t.msg(jk::Msg::CalibrationCompute), measuredBox);
    computeButton->setObjectName("Compute");
    form->addRow(QString(), computeButton);
    layout->addWidget(measuredBox);

    auto* values = new QFormLayout;
    const char* valueNames[] = {"OffsetX", "OffsetY", "ScaleX", "ScaleY"};
    QHBoxLayout* rows[2] = {new QHBoxLayout, new QHBoxLayout};
    for (int i = 0; i < 4; ++i) {
        auto* spin = value_[i] = new QDoubleSpinBox(this);
        spin->setObjectName(valueNames[i]);
        spin->setDecimals(2);
        spin->setSingleStep(0.1);
        if (i < 2) spin->setRange(-jk::kMaxCalibrationOffsetMm, jk::kMaxCalibrationOffsetMm);
        else spin->setRange(jk::kMinCalibrationScale, jk::kMaxCalibrationScale);
        rows[i / 2]->addWidget(spin);
    }
    values->addRow(t.msg(jk::Msg::CalibrationOffset), rows[0]);
    values->addRow(t.msg(jk::Msg::CalibrationScale), rows[1]);
    layout->addLayout(values);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* ok = buttons->addButton(t.msg(jk::Msg::Ok), QDialogButtonBox::AcceptRole);
    ok->setObjectName("OK");
    ok->setDefault(true);
    buttons->addButton(t.msg(jk::Msg::Cancel), QDialogButtonBox::RejectRole)->setObjectName("Cancel");
    layout->addWidget(buttons);

    setValues(printedWith_);
    printedLabel_->setText(jk::print::describeCalibration(printedWith_, t));
    connect(print, &QPushButton::clicked, this, &CalibrationDialog::printPage);
    connect(computeButton, &QPushButton::clicked, this, &CalibrationDialog::compute);
    connect(buttons, &QDialogButtonBox::accepted, this, &CalibrationDialog::store);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

bool CalibrationDialog::run(QWidget* parent, const QString& printer)
{
    CalibrationDialog d(printer, parent);
    d.printPage();
    return d.exec() == QDialog::Accepted;
}

jk::PrinterCalibration CalibrationDialog::values() const
{
    return {value_[0]->value(), value_[1]->value(), value_[2]->value(), value_[3]->value()};
}

void CalibrationDialog::setValues(const jk::PrinterCalibration& c)
{
    const double v[] = {c.offsetXMm, c.offsetYMm, c.scaleXPercent, c.scaleYPercent};
    for (int i = 0; i < 4; ++i) value_[i]->setValue(v[i]);
}

bool CalibrationDialog::printPage()
{
    jk::print::PrintTarget target = target_;
    target.calibration = values();
    QString error;
    if (!jk::print::printCalibrationPage(target, jk::texts(), &error)) {
        report(error);
        return false;
    }
    // Measurements from now on are of this page.
    printedWith_ = *target.calibration;
    printedLabel_->setText(jk::print::describeCalibration(printedWith_, jk::texts()));
    return true;
}

bool CalibrationDialog::compute()
{
    const jk::print::Measurement m{measured_[0]->text(), measured_[1]->text(), measured_[2]->text(),
                                   measured_[3]->text()};
    const jk::print::MeasuredCalibration r = jk::print::calibrationFromMeasurement(m, printedWith_, jk::texts());
    if (!r.calibration) {
        report(r.error);
        QLineEdit* bad = measured_[r.badField >= 0 ? r.badField : 0];
        bad->setFocus();
        bad->selectAll();
        return false;
    }
    setValues(*r.calibration);
    return true;
}

void CalibrationDialog::store()
{
    const jk::PrinterCalibration c = values();
    auto& calibrations = jk::appSetup().settings.calibrations;
    if (c.isIdentity()) calibrations.remove(printer_);
    else calibrations.insert(printer_, c);
    // Not written: kept for this run, as the Preferences dialog does.
    jk::saveAppSettings();
    accept();
}

CalibrationList::CalibrationList(QWidget* parent) : QGroupBox(jk::texts().msg(jk::Msg::CalibrationTitle), parent)
{
    setObjectName("CalibrationList");
    auto* layout = new QHBoxLayout(this);
    list_ = new QTreeWidget(this);
    list_->setObjectName("Calibrations");
    list_->setColumnCount(2);
    list_->setHeaderHidden(true);
    list_->setRootIsDecorated(false);
    list_->setMaximumHeight(fontMetrics().height() * 5);
    reset_ = new QPushButton(jk::texts().msg(jk::Msg::CalibrationReset), this);
    reset_->setObjectName("ResetCalibration");
    layout->addWidget(list_, 1);
    layout->addWidget(reset_, 0, Qt::AlignTop);
    fill();
    connect(list_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        reset_->setEnabled(item && jk::app().settings.calibrations.contains(item->text(0)));
    });
    connect(reset_, &QPushButton::clicked, this, &CalibrationList::resetChosen);
}

void CalibrationList::fill()
{
    list_->clear();
    const auto& stored = jk::app().settings.calibrations;
    QStringList installed;
    if (auto* p = jk::platform::services().printers) installed = p->printers();
    QStringList names = installed;
    for (auto it = stored.cbegin(); it != stored.cend(); ++it)
        if (!names.contains(it.key())) names << it.key();
    for (const QString& name : names) {
        auto* item = new QTreeWidgetItem(list_, {name, jk::print::describeCalibration(stored.value(name), jk::texts())});
        if (!installed.contains(name)) {
            // Renamed or removed since it was calibrated: kept until reset.
            item->setForeground(0, palette().brush(QPalette::Disabled, QPalette::Text));
            item->setToolTip(0, jk::texts().msg(jk::Msg::PrinterUnavailable) + u' ' + name);
        }
    }
    // Wide enough to read every calibration whole.
    list_->resizeColumnToContents(0);
    list_->resizeColumnToContents(1);
    list_->setMinimumWidth(list_->columnWidth(0) + list_->columnWidth(1) + 4 * list_->frameWidth());
    reset_->setEnabled(false);
}

void CalibrationList::resetChosen()
{
    const QTreeWidgetItem* item = list_->currentItem();
    if (!item) return;
    jk::appSetup().settings.calibrations.remove(item->text(0));
    fill();
}
