#include "ui/dialogs/FieldDialog.h"
#include "platform/Services.h"
#include "render/SheetObjects.h"
#include "model/Colors.h"
#include "model/AppContext.h"
#include "file/MessageFile.h"
#include "model/Numbering.h"
#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <cmath>

namespace pf = jk::platform;

namespace {

const QString kFilter = QStringLiteral("Text files (*.txt);;All files (*)");
// Point sizes a field may carry, so it never outgrows its 16-bit twips.
constexpr double kMinPoints = 4, kMaxPoints = 200;

QFont previewFont(const jk::TextStyle& s)
{
    QFont f(s.fontName.isEmpty() ? jk::sheet::defaultFontName() : s.fontName);
    f.setPointSizeF(s.fontSize > 0 ? s.fontSize : 9.75);
    f.setBold(s.bold != 0);
    f.setItalic(s.italic != 0);
    f.setUnderline(s.underline != 0);
    f.setStrikeOut(s.strikethru != 0);
    return f;
}

double pointsOf(const QFont& f)
{
    if (f.pointSizeF() > 0) return f.pointSizeF();
    if (f.pixelSize() > 0) return f.pixelSize() * 72.0 / 96.0;
    return 10;
}

bool onlyDigits(const QString& s)
{
    return std::all_of(s.cbegin(), s.cend(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

}  // namespace

FieldDialog::FieldDialog(bool numeric, QWidget* parent) : QDialog(parent), numeric_(numeric)
{
    setObjectName("FieldSel");
    setWindowTitle(jk::texts().msgOr(jk::Msg::FieldProperties, "Field selector"));

    menuBar_ = new QMenuBar(this);
    mfile_ = menuBar_->addMenu(jk::texts().msgOr(jk::Msg::FileMenu, "File"));
    mfile_->setObjectName("Mfile");
    mfile_->menuAction()->setObjectName("Mfile");
    fopen_ = mfile_->addAction(jk::texts().msgOr(jk::Msg::OpenMenu, "Open"));
    fopen_->setObjectName("Fopen");
    fsave_ = mfile_->addAction(jk::texts().msgOr(jk::Msg::SaveMenu, "Save"));
    fsave_->setObjectName("Fsave");

    frame1_ = new QGroupBox(jk::texts().tipOr(25, "Characters field"), this);
    frame1_->setObjectName("Frame1");
    text2_ = new QPlainTextEdit(frame1_);
    text2_->setObjectName("Text2");
    text2_->setLineWrapMode(QPlainTextEdit::NoWrap);
    text2_->setMinimumSize(300, 220);
    auto* l1 = new QVBoxLayout(frame1_);
    l1->addWidget(text2_);

    frame2_ = new QGroupBox(jk::texts().tipOr(24, "Numeric field "), this);
    frame2_->setObjectName("Frame2");
    text1_ = new QLineEdit(QStringLiteral("1"), frame2_);
    text1_->setObjectName("Text1");
    text1_->setMaxLength(5);  // 32767 is the largest number
    auto* l2 = new QVBoxLayout(frame2_);
    l2->addWidget(text1_);
    const char* digitCaptions[4] = {"1 digit", "2 digits", "3 digits", "4 digits"};
    for (int i = 0; i < 4; ++i) {
        digits_[i] = new QRadioButton(jk::texts().msgOr(jk::Msg(int(jk::Msg::OneDigit) + i), digitCaptions[i]), frame2_);
        digits_[i]->setObjectName(QStringLiteral("Option%1").arg(i + 1));
        l2->addWidget(digits_[i]);
        connect(digits_[i], &QRadioButton::clicked, this, [this, i] { digitOption(i + 1); });
    }
    check1_ = new QCheckBox(jk::texts().msgOr(jk::Msg::ShowNumberOnSpines, "Add value on folder"), frame2_);
    check1_->setObjectName("Check1");
    l2->addWidget(check1_);
    l2->addStretch(1);

    auto* side = new QWidget(this);
    command1_ = new QPushButton(jk::texts().msgOr(jk::Msg::FontButton, "Fonts"), side);
    command1_->setObjectName("Command1");
    // The platform's font dialog has no colour choice: the text colour has
    // a button of its own.
    foreColor_ = new QPushButton(tr("Text co&lor..."), side);
    foreColor_->setObjectName("ForeColor");

    frame3_ = new QGroupBox(jk::texts().msgOr(jk::Msg::Alignment, "Alignment"), side);
    frame3_->setObjectName("Frame3");
    lft_ = new QRadioButton(jk::texts().tipOr(17, "Left"), frame3_);
    lft_->setObjectName("Lft");
    cntr_ = new QRadioButton(jk::texts().msgOr(jk::Msg::Center, "Center"), frame3_);
    cntr_->setObjectName("Cntr");
    rgt_ = new QRadioButton(jk::texts().tipOr(18, "Right"), frame3_);
    rgt_->setObjectName("Rgt");
    auto* l3 = new QVBoxLayout(frame3_);
    l3->addWidget(lft_);
    l3->addWidget(cntr_);
    l3->addWidget(rgt_);

    frame4_ = new QGroupBox(jk::texts().msgOr(jk::Msg::Background, "Background"), side);
    frame4_->setObjectName("Frame4");
    option5_ = new QRadioButton(jk::texts().msgOr(jk::Msg::Transparent, "Transparent"), frame4_);
    option5_->setObjectName("Option5");
    option6_ = new QRadioButton(jk::texts().msgOr(jk::Msg::SolidColor, "Colors"), frame4_);
    option6_->setObjectName("Option6");
    auto* l4 = new QVBoxLayout(frame4_);
    l4->addWidget(option5_);
    l4->addWidget(option6_);

    check2_ = new QCheckBox(jk::texts().msgOr(jk::Msg::Border, "Border"), side);
    check2_->setObjectName("Check2");

    auto* ls = new QVBoxLayout(side);
    ls->setContentsMargins(0, 0, 0, 0);
    ls->addWidget(command1_);
    ls->addWidget(foreColor_);
    ls->addWidget(frame3_);
    ls->addWidget(frame4_);
    ls->addWidget(check2_);
    ls->addStretch(1);

    command3_ = new QPushButton(jk::texts().msgOr(jk::Msg::Ok, "OK"), this);
    command3_->setObjectName("Command3");
    command3_->setDefault(true);
    command2_ = new QPushButton(jk::texts().msgOr(jk::Msg::Cancel, "Cancel"), this);
    command2_->setObjectName("Command2");

    auto* top = new QHBoxLayout;
    top->addWidget(frame1_, 1);
    top->addWidget(frame2_, 1);
    top->addWidget(side);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(command3_);
    buttons->addWidget(command2_);
    auto* layout = new QVBoxLayout(this);
    layout->setMenuBar(menuBar_);
    layout->addLayout(top, 1);
    layout->addLayout(buttons);

    connect(text1_, &QLineEdit::textEdited, this, &FieldDialog::startValueEdited);
    connect(check1_, &QCheckBox::clicked, this, &FieldDialog::toggleSpineLink);
    connect(option5_, &QRadioButton::clicked, this, &FieldDialog::setTransparent);
    connect(option6_, &QRadioButton::clicked, this, &FieldDialog::chooseBackground);
    connect(check2_, &QCheckBox::clicked, this, &FieldDialog::toggleBorder);
    connect(lft_, &QRadioButton::clicked, this, [this] { alignment(0); });
    connect(rgt_, &QRadioButton::clicked, this, [this] { alignment(1); });
    connect(cntr_, &QRadioButton::clicked, this, [this] { alignment(2); });
    connect(command1_, &QPushButton::clicked, this, &FieldDialog::chooseFont);
    connect(foreColor_, &QPushButton::clicked, this, &FieldDialog::chooseTextColour);
    connect(fopen_, &QAction::triggered, this, &FieldDialog::openValueFile);
    connect(fsave_, &QAction::triggered, this, &FieldDialog::saveValueFile);
    connect(command3_, &QPushButton::clicked, this, &FieldDialog::acceptField);
    connect(command2_, &QPushButton::clicked, this, &FieldDialog::cancel);
}

FieldDialog::FieldDialog(const jk::CharFieldRecord& record, QWidget* parent) : FieldDialog(false, parent)
{
    result_.charField = record;
    initialise();
}

FieldDialog::FieldDialog(const jk::NumFieldRecord& record, QWidget* parent) : FieldDialog(true, parent)
{
    result_.numField = record;
    initialise();
}

FieldEditResult FieldDialog::editCharField(QWidget* parent, const jk::CharFieldRecord& record)
{
    FieldDialog dialog(record, parent);
    dialog.exec();
    return dialog.result();
}

FieldEditResult FieldDialog::editNumField(QWidget* parent, const jk::NumFieldRecord& record)
{
    FieldDialog dialog(record, parent);
    dialog.exec();
    return dialog.result();
}

jk::TextStyle& FieldDialog::style()
{
    return numeric_ ? result_.numField.style : result_.charField.style;
}

void FieldDialog::initialise()
{
    frame1_->setVisible(!numeric_);
    frame2_->setVisible(numeric_);
    mfile_->setEnabled(!numeric_);
    mfile_->menuAction()->setEnabled(!numeric_);

    const jk::TextStyle& s = style();
    fore_ = s.foreColor;
    if (!s.fontName.isEmpty()) font_ = previewFont(s);
    (s.backStyle == 1 ? option6_ : option5_)->setChecked(true);
    check2_->setChecked(s.borderStyle == 1);
    alignment_ = jk::i16(s.alignment == 1 || s.alignment == 2 ? s.alignment : 0);
    (alignment_ == 1 ? rgt_ : alignment_ == 2 ? cntr_ : lft_)->setChecked(true);

    if (numeric_) {
        jk::NumFieldRecord& r = result_.numField;
        // A new field shows one digit until another count is chosen.
        if (r.digits < 1 || r.digits > 4) r.digits = 1;
        digits_[r.digits - 1]->setChecked(true);
        check1_->setChecked(r.spineLink);
        // What the field shows now: a stepped text, else its number.
        if (!r.isFree()) text1_->setText(r.shown.value_or(jk::formatFieldNumber(r.number, r.digits)));
    } else {
        loadValueFile();
    }
    updatePreview();
    (numeric_ ? static_cast<QWidget*>(text1_) : text2_)->setFocus();
}

void FieldDialog::loadValueFile()
{
    valueFile_ = numeric_ ? QString() : result_.charField.valueFile;
    const jk::ValueList list = jk::readValueList(valueFile_);
    showValues(list.values, list.complete || list.values.isEmpty());
}

void FieldDialog::showValues(const QStringList& values, bool complete)
{
    text2_->setPlainText(values.join(u'\n'));
    // Only the start of a huge file is shown: it may be looked at, but
    // writing it back would cut the file.
    fileCut_ = !complete;
    text2_->setReadOnly(fileCut_);
}

QStringList FieldDialog::typedValues() const
{
    QStringList out;
    const QStringList lines = text2_->toPlainText().split(u'\n');
    for (const QString& line : lines)
        if (!line.trimmed().isEmpty()) out.append(line.trimmed());
    return out;
}

void FieldDialog::message(const QString& text, pf::Icon icon)
{
    if (auto* m = pf::services().messages) m->show(text, jk::texts().msgOr(jk::Msg::ProgramTitle, "Jewelcase Studio"), icon);
}

void FieldDialog::updatePreview()
{
    const QFont f = font_.value_or(previewFont(jk::TextStyle{}));
    for (QWidget* w : {static_cast<QWidget*>(text1_), static_cast<QWidget*>(text2_)}) {
        w->setFont(f);
        QPalette p = w->palette();
        p.setColor(QPalette::Text, jk::winColor(fore_));
        // The background the field will have, when it has one.
        if (const jk::TextStyle& s = style(); s.backStyle == 1) p.setColor(QPalette::Base, jk::winColor(s.backColor));
        else p.setColor(QPalette::Base, jk::winColor(fore_) == QColor(Qt::white) ? Qt::black : Qt::white);
        w->setPalette(p);
    }
    const int a = alignment_;
    text1_->setAlignment(a == 1 ? Qt::AlignRight : a == 2 ? Qt::AlignHCenter : Qt::AlignLeft);
}

void FieldDialog::startValueEdited(const QString& text)
{
    if (onlyDigits(text)) return;
    text1_->clear();
    message(jk::texts().msgOr(jk::Msg::EnterWholeNumber, "Please enter a whole number"), pf::Icon::Information);
}

void FieldDialog::digitOption(int digits)
{
    digits_[digits - 1]->setChecked(true);
    const QString t = text1_->text();
    const int value = jk::leadingNumber(t);
    if (!t.isEmpty()) text1_->setText(jk::formatFieldNumber(value, digits));
    if (numeric_) {
        jk::NumFieldRecord& r = result_.numField;
        r.digits = jk::i16(digits);
        // 0 is the mark of a deleted field: an empty or zero start value
        // leaves the number alone.
        if (value >= 1) r.number = jk::i16(value);
    }
}

void FieldDialog::toggleSpineLink()
{
    if (numeric_) result_.numField.spineLink = check1_->isChecked();
}

void FieldDialog::setTransparent()
{
    style().backStyle = 0;
    updatePreview();
}

void FieldDialog::chooseBackground()
{
    jk::TextStyle& s = style();
    const bool had = s.backStyle == 1;
    const QColor initial = had ? jk::winColor(s.backColor) : QColor(Qt::white);
    const std::optional<QColor> c = pf::services().colors->chooseColor(initial, jk::plainCaption(option6_->text()));
    if (c && c->isValid()) {
        s.backStyle = 1;
        s.backColor = jk::toWinColor(*c);
    } else if (!had) {
        // No colour chosen: the field stays as it was.
        option5_->setChecked(true);
    }
    updatePreview();
}

void FieldDialog::toggleBorder()
{
    style().borderStyle = check2_->isChecked() ? 1 : 0;
}

void FieldDialog::alignment(int a)
{
    alignment_ = jk::i16(a);
    (a == 1 ? rgt_ : a == 2 ? cntr_ : lft_)->setChecked(true);
    updatePreview();
}

void FieldDialog::chooseFont()
{
    QFont initial = font_.value_or(QFont(QStringLiteral("Arial")));
    if (!font_) initial.setPointSizeF(11.75);
    const std::optional<QFont> chosen = pf::services().fonts->chooseFont(initial, jk::plainCaption(jk::texts().msgOr(jk::Msg::FontButton, "Fonts")));
    if (!chosen) return;
    QFont f = *chosen;
    f.setPointSizeF(std::clamp(pointsOf(f), kMinPoints, kMaxPoints));
    font_ = f;
    updatePreview();
}

void FieldDialog::chooseTextColour()
{
    const std::optional<QColor> c = pf::services().colors->chooseColor(jk::winColor(fore_), jk::plainCaption(foreColor_->text()));
    if (!c || !c->isValid()) return;
    fore_ = jk::toWinColor(*c);
    foreChosen_ = true;
    updatePreview();
}

void FieldDialog::openValueFile()
{
    if (numeric_) return;
    const QString folder = valueFile_.isEmpty() ? jk::app().settings.projectFolder : QFileInfo(valueFile_).absolutePath();
    const QString path = pf::services().files->openFile(jk::plainCaption(fopen_->text()), folder, kFilter);
    if (path.isEmpty()) return;
    const QFileInfo info(path);
    const jk::ValueList list = jk::readValueList(path);
    // A picture or a folder picked by mistake must not become the file that
    // OK writes the values into.
    if (!info.isFile() || (list.values.isEmpty() && info.size() > 0)) {
        text2_->clear();
        message(QStringLiteral("\"%1\" is not a text file of values.").arg(QDir::toNativeSeparators(path)),
                pf::Icon::Warning);
        return;
    }
    valueFile_ = path;
    showValues(list.values, list.complete);
}

void FieldDialog::saveValueFile()
{
    if (numeric_) return;
    const QString folder = valueFile_.isEmpty() ? jk::app().settings.projectFolder : valueFile_;
    const QString path = pf::services().files->saveFile(jk::plainCaption(fsave_->text()), folder, kFilter, QStringLiteral("txt"));
    if (path.isEmpty()) return;
    QString error;
    if (!jk::writeFieldValues(path, typedValues(), &error)) {
        message(error, pf::Icon::Warning);
        return;
    }
    valueFile_ = path;
    fileCut_ = false;
    text2_->setReadOnly(false);
}

void FieldDialog::acceptField()
{
    if (!numeric_) {
        if (valueFile_.isEmpty()) {
            message(jk::texts().msgOr(jk::Msg::SaveValuesFirst, "Please save the values to a file first (File > Save)."), pf::Icon::Information);
            return;
        }
        const QStringList values = typedValues();
        if (values.isEmpty()) {
            message(QStringLiteral("The field has no values: type them one per line."), pf::Icon::Information);
            text2_->setFocus();
            return;
        }
        QString error;
        if (!fileCut_ && !jk::writeFieldValues(valueFile_, values, &error)) {
            message(error, pf::Icon::Warning);
            return;
        }
        result_.fieldText = values.join(u'\n');
        result_.charField.valueFile = valueFile_;
    } else {
        // 0 marks a deleted field in the tables and the project file, and
        // the numbers are 16-bit: a field starts at 1 to 32767.
        const QString t = text1_->text().trimmed();
        bool ok = false;
        const int value = t.toInt(&ok);
        if (!ok || !onlyDigits(t) || value < 1 || value > jk::kMaxFieldNumber) {
            message(jk::texts().msgOr(jk::Msg::EnterWholeNumber, "Please enter a whole number") + QStringLiteral(" (1-32767)"),
                    pf::Icon::Information);
            text1_->setFocus();
            return;
        }
        result_.fieldText = t;
        result_.numberText = t;
    }

    jk::TextStyle& s = style();
    // First formatting of a field starts from the label defaults.
    if (s.fontName.isEmpty() && (font_ || foreChosen_)) jk::sheet::applyDefaultFont(s);
    if (font_) {
        s.fontName = font_->family();
        s.fontSize = jk::i16(std::lround(std::clamp(pointsOf(*font_), kMinPoints, kMaxPoints)));
        s.bold = font_->bold();
        s.italic = font_->italic();
        s.strikethru = font_->strikeOut();
        s.underline = font_->underline();
    }
    if (foreChosen_) s.foreColor = fore_;
    s.alignment = alignment_;
    result_.accepted = true;
    closing_ = true;
    accept();
}

void FieldDialog::cancel() { reject(); }

void FieldDialog::reject()
{
    if (!closing_) {
        result_.accepted = false;
        result_.fieldText.clear();
        result_.numberText.clear();
        closing_ = true;
    }
    QDialog::reject();
}
