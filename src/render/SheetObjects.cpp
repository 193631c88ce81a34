#include "render/SheetObjects.h"
#include "render/SheetLayout.h"
#include "render/SheetRenderer.h"
#include <QFontMetricsF>
#include <QStringList>
#include <cmath>
#include <limits>

namespace jk::sheet {

namespace {

// Drawing code may run where main() did not set the font mapping up
// (tests, benchmarks, print tools): make sure the Windows faces map.
void ensureSubstitutions()
{
    static const bool done = [] {
        if (QFont::substitutes(QStringLiteral("Ms Sans Serif")).isEmpty())
            QFont::insertSubstitutions(QStringLiteral("Ms Sans Serif"),
                                       {QStringLiteral("Liberation Sans"), QStringLiteral("Arial")});
        if (QFont::substitutes(QStringLiteral("Fixedsys")).isEmpty())
            QFont::insertSubstitutions(QStringLiteral("Fixedsys"),
                                       {QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Monospace")});
        return true;
    }();
    (void)done;
}

}  // namespace

QString defaultFontName() { return QStringLiteral("Ms Sans Serif"); }

void applyDefaultFont(TextStyle& s)
{
    s.fontName = defaultFontName();
    s.fontSize = kDefaultTextSize;
    s.bold = true;
    s.italic = false;
    s.strikethru = false;
    s.underline = 0;
    s.foreColor = kDefaultTextColour;
}

int fontTwips(double points)
{
    const double px = std::max(1.0, std::round(points * kScreenDpi / 72.0));
    return int(px) * kTwipsPerPixel;
}

QFont textFont(const QString& family, double points, bool bold, bool italic, bool underline, bool strike)
{
    ensureSubstitutions();
    QFont f(family);
    f.setPixelSize(fontTwips(points));
    f.setBold(bold);
    f.setItalic(italic);
    f.setUnderline(underline);
    f.setStrikeOut(strike);
    return f;
}

QFont textFont(const TextStyle& s)
{
    return textFont(s.fontName.isEmpty() ? defaultFontName() : s.fontName,
                    s.fontSize > 0 ? s.fontSize : kDefaultTextSize, s.bold != 0, s.italic != 0, s.underline != 0,
                    s.strikethru != 0);
}

QString displayText(const QString& text)
{
    QString t = text;
    t.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    t.replace(u'\r', u'\n');
    return t;
}

QSize textExtentTwips(const TextStyle& s, const QString& text)
{
    const QFontMetricsF fm(textFont(s));
    const QString shown = displayText(text);
    // The same layout the drawing path uses, without wrapping.
    const QRectF box = fm.boundingRect(QRectF(0, 0, 1e7, 1e7), Qt::AlignLeft | Qt::AlignTop, shown);
    // Whole pixels, with the width rounded up past the last fraction so the
    // text never wraps on a device that measures it a hair wider.
    const qint64 w = qint64(std::floor(box.width() / kTwipsPerPixel) + 1) * kTwipsPerPixel;
    const qint64 h = qint64(std::ceil(box.height() / kTwipsPerPixel)) * kTwipsPerPixel;
    return QSize(int(std::min<qint64>(w, 32767)), int(std::min<qint64>(std::max<qint64>(h, kTwipsPerPixel), 32767)));
}

QString numberText(const NumFieldRecord& r)
{
    if (r.digits < 1 || r.digits > 4) return {};
    return QString::number(r.number).rightJustified(r.digits, u'0');
}

QString shownText(const Project& project, ObjectRef r, const FieldValues& fields)
{
    const jk::ProjectData& d = project.data();
    switch (r.kind) {
    case ObjKind::Text: return d.freeText.valid(r.index) ? d.freeText.at(r.index).text : QString();
    case ObjKind::PageText: return d.pageText.valid(r.index) ? d.pageText.at(r.index).text : QString();
    case ObjKind::CharField:
        if (const auto it = fields.charText.constFind(r.index); it != fields.charText.cend()) return *it;
        return d.charFields.valid(r.index) ? d.charFields.at(r.index).text : QString();
    case ObjKind::NumField:
        if (const auto it = fields.numText.constFind(r.index); it != fields.numText.cend()) return *it;
        // Stepping and printing change what a field shows, not its number.
        return d.numFields.valid(r.index) ? d.numFields.at(r.index).shown.value_or(numberText(d.numFields.at(r.index)))
                                          : QString();
    case ObjKind::Picture: return {};
    }
    return {};
}

int recordBorder(const Project& project, ObjectRef r)
{
    const TextStyle* s = project.style(r);
    return s ? s->borderStyle : 0;
}

QRect objectRectTwips(const Project& project, int code, ObjectRef r)
{
    if (r.kind == ObjKind::Picture) {
        if (!project.pictures().valid(r.index)) return {};
        const PictureRecord& p = project.pictures().at(r.index);
        QSize size(p.width, p.height);
        if (p.displayMode == 2 || p.width <= 0 || p.height <= 0) {
            const QSize px = pictureSize(p.file);
            if (px.isValid()) size = px * kTwipsPerPixel;
        }
        return QRect(QPoint(p.left, p.top), size);
    }
    const TextStyle* s = project.style(r);
    if (!s) return {};
    QRect rect(s->left, s->top, s->width, s->height);
    if (r.kind == ObjKind::PageText) rect.translate(textPageRect(code).topLeft());
    return rect;
}

i16 clampTwips(qint64 v)
{
    return i16(std::clamp<qint64>(v, std::numeric_limits<i16>::min(), std::numeric_limits<i16>::max()));
}

}  // namespace jk::sheet
