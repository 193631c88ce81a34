#include "ui/dialogs/PrintDialogs.h"
#include "model/AppContext.h"
#include "output/PrintPlan.h"
#include "platform/Services.h"
#include <QCheckBox>
#include <QComboBox>
#include <QGuiApplication>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace pf = jk::platform;
using jk::Msg;

namespace {

// The print dialogs open near the screen's top right corner, clear of the
// sheets being printed.
void placeTopRight(QDialog& d)
{
    d.adjustSize();
    const QScreen* screen = d.parentWidget() ? d.parentWidget()->screen() : QGuiApplication::primaryScreen();
    if (!screen) return;
    const QRect area = screen->availableGeometry();
    d.move(std::max(area.left(), area.right() - 370 - std::max(0, d.width() - 370)), area.top() + 40);
}

QPushButton* button(QWidget* parent, const char* name, const QString& caption)
{
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(QString::fromLatin1(name));
    return b;
}

}  // namespace

// ---- Form1 ----------------------------------------------------------------

PrinterDialog::PrinterDialog(QWidget* parent, const std::function<void(const QString&)>& onPrinterChosen)
    : QDialog(parent)
{
    const jk::Texts& t = jk::texts();
    setObjectName(QStringLiteral("Form1"));
    setWindowTitle(t.msgOr(Msg::Printer, "Printer"));

    auto* frame1 = new QGroupBox(t.msgOr(Msg::Printer, "Printer") + u' ', this);
    frame1->setObjectName(QStringLiteral("Frame1"));
    printers_ = new QComboBox(frame1);
    printers_->setObjectName(QStringLiteral("Combo1"));
    printers_->setMinimumContentsLength(28);
    if (auto* p = pf::services().printers) {
        printers_->addItems(p->printers());
        printers_->setCurrentIndex(printers_->findText(p->defaultPrinter()));
    }
    (new QVBoxLayout(frame1))->addWidget(printers_);
    // The choice counts at once, for this run and as the current printer.
    connect(printers_, &QComboBox::textActivated, this, [onPrinterChosen](const QString& name) {
        if (onPrinterChosen) onPrinterChosen(name);
    });

    auto* frame2 = new QGroupBox(t.msgOr(Msg::Copies, "Copies"), this);
    frame2->setObjectName(QStringLiteral("Frame2"));
    copiesBox_ = new QLineEdit(QStringLiteral("1"), frame2);
    copiesBox_->setObjectName(QStringLiteral("Text1"));
    copiesBox_->selectAll();
    (new QVBoxLayout(frame2))->addWidget(copiesBox_);

    QPushButton* ok = button(this, "Command1", t.msgOr(Msg::Ok, "OK"));
    QPushButton* cancel = button(this, "Command2", t.msgOr(Msg::Cancel, "Cancel"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &PrinterDialog::acceptCopies);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* top = new QVBoxLayout(this);
    top->addWidget(frame1);
    top->addWidget(frame2);
    top->addLayout(buttons);
    copiesBox_->setFocus();
}

void PrinterDialog::acceptCopies()
{
    const std::optional<int> n = jk::print::copiesFromText(copiesBox_->text());
    if (!n) {
        if (auto* m = pf::services().messages)
            m->show(jk::texts().msg(Msg::TooManyCopies).arg(jk::print::kMaxCopies), windowTitle(),
                    pf::Icon::Information);
        copiesBox_->selectAll();
        copiesBox_->setFocus();
        return;
    }
    copies_ = *n;
    accept();
}

PrinterChoice PrinterDialog::run(QWidget* parent, const std::function<void(const QString&)>& onPrinterChosen)
{
    PrinterChoice c;
    if (auto* p = pf::services().printers) c.savedPrinter = p->defaultPrinter();
    PrinterDialog d(parent, onPrinterChosen);
    placeTopRight(d);
    // Cancel, or closing the dialog, prints nothing.
    c.copies = d.exec() == QDialog::Accepted ? d.copies_ : 0;
    c.printer = d.printers_->currentText();
    return c;
}

// ---- SELPFRM --------------------------------------------------------------

SheetSelectionDialog::SheetSelectionDialog(QWidget* parent, int projectWeights) : QDialog(parent)
{
    const jk::Texts& t = jk::texts();
    setObjectName(QStringLiteral("SELPFRM"));
    setWindowTitle(t.msgOr(Msg::SelectSheetsToPrint, "Select sheet(s) to be printed"));
    // Box, print weight, format-name entry, design caption.
    const struct {
        const char* name;
        int weight;
        int formatCode;
        const char* caption;
    } rows[] = {{"Check1", 1, 2, "Double cover"},
                {"Check2", 4, 1, "Single cover"},
                {"Check3", 8, 4, "Inside cover"},
                {"Check4", 2, 8, "CD ROM"}};
    const jk::print::SelectionBoxes set = jk::print::selectionBoxes(projectWeights);
    auto* top = new QVBoxLayout(this);
    for (const auto& r : rows) {
        const QString name = t.formatName(r.formatCode);
        auto* box = new QCheckBox(name.isEmpty() ? QString::fromLatin1(r.caption) : name, this);
        box->setObjectName(QString::fromLatin1(r.name));
        box->setChecked(set.checked & r.weight);
        box->setEnabled(!(set.disabled & r.weight));
        top->addWidget(box);
        boxes_.emplace_back(box, r.weight);
    }
    ok_ = button(this, "Command1", t.msgOr(Msg::Ok, "OK"));
    ok_->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok_);
    top->addLayout(buttons);
    // OK only when something is ticked.
    auto noCheck = [this] { ok_->setEnabled(checkedWeights() != 0); };
    for (const auto& [box, weight] : boxes_) connect(box, &QCheckBox::toggled, this, noCheck);
    noCheck();
    connect(ok_, &QPushButton::clicked, this, &QDialog::accept);
}

int SheetSelectionDialog::checkedWeights() const
{
    int sum = 0;
    for (const auto& [box, weight] : boxes_)
        if (box->isChecked()) sum += weight;
    return sum;
}

int SheetSelectionDialog::run(QWidget* parent, int projectWeights)
{
    SheetSelectionDialog d(parent, projectWeights);
    placeTopRight(d);
    return d.exec() == QDialog::Accepted ? d.checkedWeights() : 0;
}

// ---- CDCHOOSE -------------------------------------------------------------

DiscStockDialog::DiscStockDialog(QWidget* parent, const std::vector<jk::print::DiscStock>& stocks,
                                 const QString& preselect,
                                 const std::function<void(const jk::print::DiscStock&)>& testPrint)
    : QDialog(parent), stocks_(stocks)
{
    const jk::Texts& t = jk::texts();
    setObjectName(QStringLiteral("CDCHOOSE"));
    setWindowTitle(t.msgOr(Msg::DiscLabelStock, "Select destination for printing CDROM label"));

    filter_ = new QLineEdit(this);
    filter_->setObjectName(QStringLiteral("Filter"));
    filter_->setPlaceholderText(t.msg(Msg::FilterStocks));
    filter_->setClearButtonEnabled(true);
    list_ = new QListWidget(this);
    list_->setObjectName(QStringLiteral("List1"));
    list_->setMinimumSize(360, 220);
    for (const jk::print::DiscStock& s : stocks) list_->addItem(s.name);

    auto* frame1 = new QGroupBox(t.msgOr(Msg::Description, " Description"), this);
    frame1->setObjectName(QStringLiteral("Frame1"));
    description_ = new QLabel(frame1);
    description_->setObjectName(QStringLiteral("Label1"));
    description_->setWordWrap(true);
    description_->setMinimumHeight(description_->fontMetrics().lineSpacing() * 3);
    (new QVBoxLayout(frame1))->addWidget(description_);

    keep_ = new QCheckBox(t.msgOr(Msg::KeepBackground, "Keep background"), this);
    keep_->setObjectName(QStringLiteral("SSCheck1"));

    QPushButton* ok = button(this, "Command1", t.msgOr(Msg::Ok, "OK"));
    QPushButton* cancel = button(this, "Command2", t.msgOr(Msg::Cancel, "Cancel"));
    ok->setDefault(true);
    auto* buttons = new QHBoxLayout;
    if (testPrint) {
        QPushButton* test = button(this, "TestPrint", t.msg(Msg::TestPrintOutline));
        buttons->addWidget(test);
        connect(test, &QPushButton::clicked, this, [this, testPrint] {
            if (list_->currentRow() >= 0) testPrint(stocks_[std::size_t(list_->currentRow())]);
        });
    }
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);

    auto* top = new QVBoxLayout(this);
    top->addWidget(filter_);
    top->addWidget(list_, 1);
    top->addWidget(frame1);
    top->addWidget(keep_);
    top->addLayout(buttons);

    connect(filter_, &QLineEdit::textChanged, this, &DiscStockDialog::filter);
    connect(list_, &QListWidget::currentRowChanged, this, &DiscStockDialog::selectRow);
    connect(list_, &QListWidget::itemDoubleClicked, ok, &QPushButton::click);
    connect(ok, &QPushButton::clicked, this, [this] {
        if (list_->currentRow() < 0) return;  // nothing left by the filter
        choice_.answer = DiscStockChoice::Ok;
        choice_.keepBackground = keep_->isChecked();
        accept();
    });
    connect(cancel, &QPushButton::clicked, this, [this] {
        choice_.answer = DiscStockChoice::Cancelled;
        reject();
    });

    // The stock chosen last time, else the first one.
    int row = 0;
    for (int i = 0; i < int(stocks.size()); ++i)
        if (stocks[std::size_t(i)].name == preselect) row = i;
    list_->setCurrentRow(stocks.empty() ? -1 : row);
    list_->setFocus();
}

void DiscStockDialog::selectRow(int row)
{
    if (row < 0) {
        description_->clear();
        return;
    }
    choice_.stock = stocks_[std::size_t(row)];
    description_->setText(choice_.stock.description);
}

void DiscStockDialog::filter(const QString& text)
{
    const QStringList words = text.simplified().split(u' ', Qt::SkipEmptyParts);
    int firstShown = -1;
    for (int i = 0; i < list_->count(); ++i) {
        const jk::print::DiscStock& s = stocks_[std::size_t(i)];
        bool shown = true;
        for (const QString& w : words)
            shown = shown && (s.name.contains(w, Qt::CaseInsensitive) || s.description.contains(w, Qt::CaseInsensitive));
        list_->item(i)->setHidden(!shown);
        if (shown && firstShown < 0) firstShown = i;
    }
    // The selection follows the filter: it never rests on a hidden stock.
    const int current = list_->currentRow();
    if (current < 0 || list_->item(current)->isHidden()) list_->setCurrentRow(firstShown);
}

DiscStockChoice DiscStockDialog::run(QWidget* parent, const std::vector<jk::print::DiscStock>& stocks,
                                     const QString& preselect,
                                     const std::function<void(const jk::print::DiscStock&)>& testPrint)
{
    DiscStockDialog d(parent, stocks, preselect, testPrint);
    d.exec();
    return d.choice_;
}
