#include "model/Numbering.h"
#include "file/FieldValues.h"
#include "model/Global.h"
#include "model/Procedures.h"
#include "model/Shell.h"
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <algorithm>

namespace jk {

namespace {

FieldShownHook g_hook;

// Format codes of the sheets that are open. Without a main window (tools,
// tests of this module) every sheet counts as open.
QSet<int> openSheets()
{
    QSet<int> codes;
    if (IShell* s = shell()) {
        for (ISheet* sheet : s->sheets()) codes.insert(sheet->formatCode());
    } else {
        codes = {FmtSimple, FmtDouble, FmtInside, FmtCdRom, FmtJacket};
    }
    return codes;
}

bool liveNumField(int index)
{
    const Global& g = G();
    return index >= 1 && index <= g.numFields.count() && !g.numFields.at(index).isFree();
}

bool liveCharField(int index)
{
    const Global& g = G();
    return index >= 1 && index <= g.charFields.count() && !g.charFields.at(index).isFree();
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

QString numFieldText(int index)
{
    const Global& g = G();
    if (!g.numFields.valid(index)) return {};
    const NumFieldRecord& r = g.numFields.at(index);
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

// ---- Shown texts --------------------------------------------------------------

void setFieldShownHook(FieldShownHook hook) { g_hook = std::move(hook); }

void setNumFieldShown(int index, const QString& text)
{
    Global& g = G();
    if (!g.numFields.valid(index)) return;
    g.numFields.at(index).shown = text;
    if (g_hook) g_hook(true, index);
}

void setCharFieldShown(int index, const QString& text)
{
    Global& g = G();
    if (!g.charFields.valid(index)) return;
    g.charFields.at(index).text = text;
    if (g_hook) g_hook(false, index);
}

// ---- Stepping ----------------------------------------------------------------

void showNumberEverywhere(const QString& text)
{
    Global& g = G();
    const QSet<int> open = openSheets();
    bool linked = false;
    const int last = std::min(g.numFields.count(), kSteppedFieldRange);
    for (int i = 1; i <= last; ++i) {
        const NumFieldRecord& r = g.numFields.at(i);
        if (r.isFree() || !open.contains(r.sheet)) continue;
        setNumFieldShown(i, text);
        linked = linked || r.spineLink;
    }
    fieldHandOver().numberText = text;
    if (linked) {
        g.spineNumberText = text;
        spinePropagation();
    }
}

bool stepNumber(int index, int delta)
{
    if (!liveNumField(index) || delta == 0) return false;
    const int now = leadingNumber(numFieldText(index));
    const int n = delta > 0 ? nextFieldNumber(now) : previousFieldNumber(now);
    if (n == now) return false;
    G().currentNumber = i16(n);
    showNumberEverywhere(formatFieldNumber(n, G().numFields.at(index).digits));
    return true;
}

bool resetNumber(int index)
{
    if (!liveNumField(index)) return false;
    G().currentNumber = 1;
    showNumberEverywhere(formatFieldNumber(1, G().numFields.at(index).digits));
    return true;
}

ValuePosition valuePosition(int index)
{
    if (!liveCharField(index)) return {};
    const CharFieldRecord& r = G().charFields.at(index);
    const QStringList values = fieldValues(r.valueFile);
    return {int(values.indexOf(r.text)) + 1, int(values.size())};
}

bool stepValue(int index, int direction)
{
    if (!liveCharField(index) || direction == 0) return false;
    const CharFieldRecord& r = G().charFields.at(index);
    const QStringList values = fieldValues(r.valueFile);
    const qsizetype p = values.indexOf(r.text);
    if (p < 0) return false;
    const qsizetype q = p + (direction > 0 ? 1 : -1);
    if (q < 0 || q >= values.size()) return false;
    setCharFieldShown(index, values.at(q));
    G().currentNumber = i16(std::min<qsizetype>(q + 1, kMaxFieldNumber));
    return true;
}

void updateSpineNumber()
{
    Global& g = G();
    const QSet<int> open = openSheets();
    QString number;
    for (int i = 1; i <= g.numFields.count(); ++i) {
        const NumFieldRecord& r = g.numFields.at(i);
        if (!r.isFree() && r.spineLink && open.contains(r.sheet)) number = numFieldText(i);
    }
    g.spineNumberText = number;
    spinePropagation();
}

// ---- Printing ----------------------------------------------------------------

void advanceSheet(int sheetCode)
{
    Global& g = G();
    // A sheet's labels step through one list: its first field with a value
    // file moves on.
    for (int i = 1; i <= g.charFields.count(); ++i) {
        const CharFieldRecord& r = g.charFields.at(i);
        if (r.sheet != sheetCode || r.valueFile.isEmpty() || r.isFree()) continue;
        stepValue(i, 1);
        break;
    }
    // The numbers are taken before any is written: putting one everywhere
    // must not make the next field of the sheet step twice.
    std::vector<std::pair<int, QString>> steps;
    for (int i = 1; i <= g.numFields.count(); ++i) {
        const NumFieldRecord& r = g.numFields.at(i);
        const QString shown = numFieldText(i);
        if (r.isFree() || r.sheet != sheetCode || shown.isEmpty()) continue;
        steps.emplace_back(i, formatFieldNumber(nextFieldNumber(leadingNumber(shown)), r.digits));
    }
    for (const auto& [index, text] : steps) {
        setNumFieldShown(index, text);
        showNumberEverywhere(text);
        g.currentNumber = i16(leadingNumber(text));
    }
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

CopyNumbering::CopyNumbering()
{
    const Global& g = G();
    for (int i = 1; i <= g.charFields.count(); ++i) {
        const CharFieldRecord& r = g.charFields.at(i);
        if (r.isFree() || r.valueFile.isEmpty()) continue;
        QStringList values = fieldValues(r.valueFile);
        // A field whose file cannot be read keeps what it shows.
        if (!values.isEmpty()) chars_.push_back({i, std::move(values)});
    }
    for (int i = 1; i <= g.numFields.count(); ++i) {
        const QString shown = numFieldText(i);
        if (g.numFields.at(i).isFree() || shown.isEmpty()) continue;
        nums_.push_back({i, leadingNumber(shown)});
    }
}

void CopyNumbering::showNumbers(int offset) const
{
    Global& g = G();
    QString spine;
    bool linked = false;
    for (const NumStart& s : nums_) {
        const NumFieldRecord& r = g.numFields.at(s.index);
        const int n = numberForCopy(s.number, offset + 1);
        const QString text = formatFieldNumber(n, r.digits);
        setNumFieldShown(s.index, text);
        g.currentNumber = i16(n);
        fieldHandOver().numberText = text;
        if (r.spineLink) {
            spine = text;
            linked = true;
        }
    }
    if (linked) {
        g.spineNumberText = spine;
        spinePropagation();
    }
}

void CopyNumbering::showCopy(int copy) const
{
    for (const CharStart& c : chars_) setCharFieldShown(c.index, valueForCopy(c.values, copy));
    showNumbers(std::max(copy, 1) - 1);
}

void CopyNumbering::finish(int copiesPrinted) const { showNumbers(std::max(copiesPrinted, 0)); }

// ---- Hand-over -----------------------------------------------------------------

FieldHandOver& fieldHandOver()
{
    static FieldHandOver h;
    return h;
}

}  // namespace jk
