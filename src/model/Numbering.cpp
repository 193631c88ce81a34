#include "model/Numbering.h"
#include "file/ValueFile.h"
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <algorithm>

namespace jk {

namespace {

bool liveNumField(const Project& project, int index)
{
    return index >= 1 && index <= project.numFields().count() && !project.numFields().at(index).isFree();
}

bool liveCharField(const Project& project, int index)
{
    return index >= 1 && index <= project.charFields().count() && !project.charFields().at(index).isFree();
}

// Control characters other than the tab do not occur in a text file.
bool looksBinary(const QString& value)
{
    return std::any_of(value.cbegin(), value.cend(), [](QChar c) { return c.unicode() < 0x20 && c != u'\t'; });
}

bool needsQuotes(const QString& v)
{
    if (v.isEmpty()) return false;
    const QChar first = v.front(), last = v.back();
    return v.contains(u',') || first == u' ' || first == u'\t' || last == u' ' || last == u'\t' || first == u'"';
}

}  // namespace

// ---- Numbers -----------------------------------------------------------------

QString formatFieldNumber(int n, int digits)
{
    if (digits < 1 || digits > 4) return {};
    const QString s = QString::number(std::abs(qint64(n))).rightJustified(digits, u'0');
    return n < 0 ? u'-' + s : s;
}

int leadingNumber(const QString& text)
{
    qsizetype i = 0;
    const qsizetype n = text.size();
    while (i < n && (text[i] == u' ' || text[i] == u'\t')) ++i;
    bool negative = false;
    if (i < n && (text[i] == u'-' || text[i] == u'+')) negative = text[i++] == u'-';
    qint64 v = 0;
    for (; i < n && text[i] >= u'0' && text[i] <= u'9'; ++i) {
        v = v * 10 + (text[i].unicode() - u'0');
        if (v > kMaxFieldNumber + 1) v = kMaxFieldNumber + 1;  // enough to clamp either way
    }
    return int(negative ? std::max<qint64>(-v, -32768) : std::min<qint64>(v, kMaxFieldNumber));
}

int nextFieldNumber(int n) { return n >= kMaxFieldNumber ? kMaxFieldNumber : n + 1; }
int previousFieldNumber(int n) { return n <= 0 ? n : n - 1; }

QString numFieldText(const Project& project, int index)
{
    if (!project.numFields().valid(index)) return {};
    const NumFieldRecord& r = project.numFields().at(index);
    return r.shown.value_or(formatFieldNumber(r.number, r.digits));
}

// ---- Value files -------------------------------------------------------------

ValueList readValueList(const QString& path)
{
    ValueList out;
    const QFileInfo info(path);
    if (path.isEmpty() || !info.isFile()) return out;
    const QStringList raw = readFieldValues(path);
    for (const QString& v : raw) {
        if (looksBinary(v)) return {};
        if (!v.isEmpty()) out.values.append(v);
    }
    out.complete = info.size() <= kMaxValueFileBytes && raw.size() < kMaxFieldValues;
    return out;
}

QStringList fieldValues(const QString& path) { return readValueList(path).values; }

bool writeFieldValues(const QString& path, const QStringList& values, QString* error)
{
    auto fail = [&](const QString& why) {
        if (error) *error = QStringLiteral("Cannot write the values to \"%1\": %2").arg(path, why);
        return false;
    };
    if (path.isEmpty()) return fail(QStringLiteral("no file name"));
    if (QFileInfo(path).isDir()) return fail(QStringLiteral("it is a folder"));
    QString text;
    for (QString v : values) {
        if (needsQuotes(v)) {
            v.replace(u'"', u'\'');
            v = u'"' + v + u'"';
        }
        text += v;
        text += QStringLiteral("\r\n");
    }
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly)) return fail(f.errorString());
    const QByteArray bytes = text.toUtf8();
    if (f.write(bytes) != bytes.size()) return fail(f.errorString());
    if (!f.commit()) return fail(f.errorString());
    return true;
}

// ---- Stepping ----------------------------------------------------------------

void showNumberEverywhere(Project& project, const QString& text)
{
    const int open = project.sheetComposition();
    bool linked = false;
    const int last = std::min(project.numFields().count(), kSteppedFieldRange);
    for (int i = 1; i <= last; ++i) {
        const NumFieldRecord& r = project.numFields().at(i);
        if (r.isFree() || !(open & r.sheet)) continue;
        project.setNumFieldShown(i, text);
        linked = linked || r.spineLink;
    }
    if (linked) {
        project.setSpineNumberText(text);
        project.propagateSpine();
    }
}

bool stepNumber(Project& project, int index, int delta)
{
    if (!liveNumField(project, index) || delta == 0) return false;
    const int now = leadingNumber(numFieldText(project, index));
    const int n = delta > 0 ? nextFieldNumber(now) : previousFieldNumber(now);
    if (n == now) return false;
    project.setCurrentNumber(n);
    showNumberEverywhere(project, formatFieldNumber(n, project.numFields().at(index).digits));
    return true;
}

bool resetNumber(Project& project, int index)
{
    if (!liveNumField(project, index)) return false;
    project.setCurrentNumber(1);
    showNumberEverywhere(project, formatFieldNumber(1, project.numFields().at(index).digits));
    return true;
}

ValuePosition valuePosition(const Project& project, int index)
{
    if (!liveCharField(project, index)) return {};
    const CharFieldRecord& r = project.charFields().at(index);
    const QStringList values = fieldValues(r.valueFile);
    return {int(values.indexOf(r.text)) + 1, int(values.size())};
}

bool stepValue(Project& project, int index, int direction)
{
    if (!liveCharField(project, index) || direction == 0) return false;
    const CharFieldRecord& r = project.charFields().at(index);
    const QStringList values = fieldValues(r.valueFile);
    const qsizetype p = values.indexOf(r.text);
    if (p < 0) return false;
    const qsizetype q = p + (direction > 0 ? 1 : -1);
    if (q < 0 || q >= values.size()) return false;
    project.setCharFieldShown(index, values.at(q));
    project.setCurrentNumber(int(std::min<qsizetype>(q + 1, kMaxFieldNumber)));
    return true;
}

void updateSpineNumber(Project& project)
{
    const int open = project.sheetComposition();
    QString number;
    for (int i = 1; i <= project.numFields().count(); ++i) {
        const NumFieldRecord& r = project.numFields().at(i);
        if (!r.isFree() && r.spineLink && (open & r.sheet)) number = numFieldText(project, i);
    }
    project.setSpineNumberText(number);
    project.propagateSpine();
}

// ---- Printing ----------------------------------------------------------------

void advanceSheet(Project& project, int sheetCode)
{
    // A sheet's labels step through one list: its first field with a value
    // file moves on.
    for (int i = 1; i <= project.charFields().count(); ++i) {
        const CharFieldRecord& r = project.charFields().at(i);
        if (r.sheet != sheetCode || r.valueFile.isEmpty() || r.isFree()) continue;
        stepValue(project, i, 1);
        break;
    }
    // The numbers are taken before any is written: putting one everywhere
    // must not make the next field of the sheet step twice.
    std::vector<std::pair<int, QString>> steps;
    for (int i = 1; i <= project.numFields().count(); ++i) {
        const NumFieldRecord& r = project.numFields().at(i);
        const QString shown = numFieldText(project, i);
        if (r.isFree() || r.sheet != sheetCode || shown.isEmpty()) continue;
        steps.emplace_back(i, formatFieldNumber(nextFieldNumber(leadingNumber(shown)), r.digits));
    }
    for (const auto& [index, text] : steps) {
        project.setNumFieldShown(index, text);
        showNumberEverywhere(project, text);
        project.setCurrentNumber(leadingNumber(text));
    }
}

FieldValues advancedSheetValues(const Project& project, int sheetCode, const FieldValues& shown)
{
    // Stepping a scratch copy keeps one set of stepping rules.
    Project scratch;
    scratch.load(project.data());
    applyFieldValues(scratch, shown);
    advanceSheet(scratch, sheetCode);
    FieldValues v = shown;
    for (int i = 1; i <= scratch.charFields().count(); ++i)
        if (!scratch.charFields().at(i).isFree() &&
            (shown.charText.contains(i) || scratch.charFields().at(i).text != project.charFields().at(i).text))
            v.charText.insert(i, scratch.charFields().at(i).text);
    for (int i = 1; i <= scratch.numFields().count(); ++i) {
        const NumFieldRecord& r = scratch.numFields().at(i);
        if (!r.isFree() && r.shown && (shown.numText.contains(i) || r.shown != project.numFields().at(i).shown))
            v.numText.insert(i, *r.shown);
    }
    if (shown.spineNumber || scratch.spineNumberText() != project.spineNumberText()) v.spineNumber = scratch.spineNumberText();
    if (shown.lastNumber || scratch.currentNumber() != project.currentNumber()) v.lastNumber = scratch.currentNumber();
    return v;
}

QString valueForCopy(const QStringList& values, int copy)
{
    if (values.isEmpty()) return {};
    return values.at(std::clamp<qsizetype>(copy, 1, values.size()) - 1);
}

int numberForCopy(int start, int copy)
{
    const qint64 n = qint64(start) + std::max(copy, 1) - 1;
    return int(std::min<qint64>(n, kMaxFieldNumber));
}

CopyNumbering::CopyNumbering(const Project& project)
{
    for (int i = 1; i <= project.charFields().count(); ++i) {
        const CharFieldRecord& r = project.charFields().at(i);
        if (r.isFree() || r.valueFile.isEmpty()) continue;
        QStringList values = fieldValues(r.valueFile);
        // A field whose file cannot be read keeps what it shows.
        if (!values.isEmpty()) chars_.push_back({i, std::move(values)});
    }
    for (int i = 1; i <= project.numFields().count(); ++i) {
        const QString shown = numFieldText(project, i);
        if (project.numFields().at(i).isFree() || shown.isEmpty()) continue;
        nums_.push_back({i, leadingNumber(shown), project.numFields().at(i).digits,
                         project.numFields().at(i).spineLink});
    }
}

FieldValues CopyNumbering::numbersAt(int offset) const
{
    FieldValues v;
    for (const NumStart& s : nums_) {
        const int n = numberForCopy(s.number, offset + 1);
        const QString text = formatFieldNumber(n, s.digits);
        v.numText.insert(s.index, text);
        v.lastNumber = n;
        if (s.spineLink) v.spineNumber = text;
    }
    return v;
}

FieldValues CopyNumbering::valuesForCopy(int copy) const
{
    FieldValues v = numbersAt(std::max(copy, 1) - 1);
    for (const CharStart& c : chars_) v.charText.insert(c.index, valueForCopy(c.values, copy));
    return v;
}

void CopyNumbering::finish(Project& project, int copiesPrinted) const
{
    FieldValues v = numbersAt(std::max(copiesPrinted, 0));
    if (copiesPrinted >= 1)
        for (const CharStart& c : chars_) v.charText.insert(c.index, valueForCopy(c.values, copiesPrinted));
    applyFieldValues(project, v);
}

void applyFieldValues(Project& project, const FieldValues& values)
{
    for (auto it = values.charText.cbegin(); it != values.charText.cend(); ++it)
        project.setCharFieldShown(it.key(), *it);
    for (auto it = values.numText.cbegin(); it != values.numText.cend(); ++it)
        project.setNumFieldShown(it.key(), *it);
    if (values.lastNumber) project.setCurrentNumber(*values.lastNumber);
    if (values.spineNumber) {
        project.setSpineNumberText(*values.spineNumber);
        project.propagateSpine();
    }
}

}  // namespace jk
