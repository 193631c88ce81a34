#include "sheet/SheetRenderer.h"
#include "state/Global.h"
#include <QCache>
#include <QFileInfo>
#include <QFontMetricsF>
#include <QImageReader>
#include <QPageLayout>
#include <QPageSize>
#include <QPaintDevice>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>
#include <QtMath>
#include <cmath>

namespace jk::sheet {

namespace {

constexpr double kLine = kTwipsPerPixel;  // a single line: one screen pixel wide

// A single-line frame drawn inside the rectangle, so the outer edge of the
// line is the rectangle's edge at every resolution.
void frame(QPainter& p, const QRectF& r, const QColor& c)
{
    const double w = std::min({kLine, r.width() / 2, r.height() / 2});
    p.fillRect(QRectF(r.left(), r.top(), r.width(), w), c);
    p.fillRect(QRectF(r.left(), r.bottom() - w, r.width(), w), c);
    p.fillRect(QRectF(r.left(), r.top() + w, w, r.height() - 2 * w), c);
    p.fillRect(QRectF(r.right() - w, r.top() + w, w, r.height() - 2 * w), c);
}

// Font sizes are points; one point is 20 twips.
QFont twipsFont(const QString& family, int points, bool bold, bool italic, bool underline, bool strike)
{
    QFont f(family);
    f.setPixelSize(std::max(1, points * 20));
    f.setBold(bold);
    f.setItalic(italic);
    f.setUnderline(underline);
    f.setStrikeOut(strike);
    return f;
}

// A text block, field or text-page block, drawn like the label that shows it:
// optional opaque back colour, word-wrapped text with its alignment, optional
// single-line border.
void drawTextObject(QPainter& p, const TextStyle& s, const QString& text, QPointF origin)
{
    const QRectF r(origin.x() + s.left, origin.y() + s.top, s.width, s.height);
    if (r.width() <= 0 || r.height() <= 0) return;
    if (s.backStyle == 1) p.fillRect(r, winColor(s.backColor));
    p.save();
    p.setClipRect(r, Qt::IntersectClip);
    p.setFont(twipsFont(s.fontName.isEmpty() ? QStringLiteral("MS Sans Serif") : s.fontName,
                        s.fontSize > 0 ? s.fontSize : 8, s.bold, s.italic, s.underline, s.strikethru));
    p.setPen(winColor(s.foreColor));
    const int h = s.alignment == 1 ? Qt::AlignRight : s.alignment == 2 ? Qt::AlignHCenter : Qt::AlignLeft;
    p.drawText(r, h | Qt::AlignTop | Qt::TextWordWrap, text);
    p.restore();
    if (s.borderStyle == 1) frame(p, r, Qt::black);
}

QString numberText(const NumFieldRecord& r)
{
    if (r.digits < 1 || r.digits > 4) return {};
    return QString::number(r.number).rightJustified(r.digits, u'0');
}

void drawBackground(QPainter& p, int code, const QRectF& canvas)
{
    p.fillRect(canvas, Qt::white);
    const Global& g = G();
    if (code < 1 || code >= int(g.backgrounds.size())) return;
    const Background b = parseBackground(g.backgrounds[std::size_t(code)].text);
    if (b.kind == Background::Colour) {
        p.fillRect(canvas, winColor(b.colour));
    } else if (b.kind == Background::Picture) {
        const QImage img = loadPicture(b.file);
        if (!img.isNull()) p.drawImage(canvas, img);
    }
}

// The labels of the canvas: free text blocks and both kinds of field.
void drawLabels(QPainter& p, int code)
{
    const Global& g = G();
    for (int i = 1; i <= g.freeText.count(); ++i) {
        const TextRecord& r = g.freeText.at(i);
        if (r.sheet == code && !r.isFree()) drawTextObject(p, r.style, r.text, {});
    }
    for (int i = 1; i <= g.charFields.count(); ++i) {
        const CharFieldRecord& r = g.charFields.at(i);
        if (r.sheet == code && !r.isFree()) drawTextObject(p, r.style, r.text, {});
    }
    for (int i = 1; i <= g.numFields.count(); ++i) {
        const NumFieldRecord& r = g.numFields.at(i);
        if (r.sheet == code && !r.isFree()) drawTextObject(p, r.style, numberText(r), {});
    }
}

void drawSpine(QPainter& p, const QRect& panel, Spine side)
{
    const Global::SpineFont& sf = G().spineFont;
    p.save();
    p.setClipRect(panel, Qt::IntersectClip);
    p.fillRect(panel, winColor(sf.backColor));
    frame(p, panel, Qt::black);
    const QString line = spineLine(G().spineText, G().spineNumberText);
    if (!line.isEmpty()) {
        p.setFont(twipsFont(sf.name.isEmpty() ? QStringLiteral("Arial") : sf.name, sf.size, sf.bold != 0,
                            sf.italic != 0, sf.underline != 0, sf.strikethru != 0));
        p.setPen(winColor(sf.foreColor));
        // The start point is the top of the text cell, as a rotated GDI
        // font places it; the baseline lies one ascent "below" it.
        p.translate(panel.topLeft() + spineTextStart(side, panel.height()));
        p.rotate(spineTextRotation(side));
        const QFontMetricsF fm(p.font(), p.device());
        p.drawText(QPointF(0, fm.ascent()), line);
    }
    p.restore();
}

void drawTextPage(QPainter& p, int code, bool border)
{
    const QRect panel = textPageRect(code);
    p.fillRect(panel, Qt::white);
    const Global& g = G();
    for (int i = 1; i <= g.pageText.count(); ++i) {
        const TextRecord& r = g.pageText.at(i);
        if (r.sheet == code && !r.isFree()) drawTextObject(p, r.style, r.text, panel.topLeft());
    }
    if (border) frame(p, panel, Qt::black);
}

void drawPictures(QPainter& p, int code, const QSet<int>& hidden)
{
    const Global& g = G();
    for (int i = 1; i <= g.pictures.count(); ++i) {
        const PictureRecord& r = g.pictures.at(i);
        if (r.sheet != code || r.isFree() || hidden.contains(i)) continue;
        const QImage img = loadPicture(r.file);
        if (img.isNull()) continue;
        QSizeF size(r.width, r.height);
        if (r.displayMode == 2 || r.width <= 0 || r.height <= 0) size = img.size() * double(kTwipsPerPixel);
        p.drawImage(QRectF(QPointF(r.left, r.top), size), img);
    }
}

void drawDiscOutline(QPainter& p, const QRectF& canvas)
{
    // Every pixel ring of radius 0-62 and 228-350 around the centre, as
    // the pixels whose centres fall within half a pixel of those radii.
    const QPointF c = canvas.center();
    QPainterPath path;
    path.setFillRule(Qt::OddEvenFill);
    for (double r : {kHoleRadius + 0.5, kDiscRadius - 0.5, kOuterRadius + 0.5})
        path.addEllipse(c, pixelToTwips(r), pixelToTwips(r));
    p.fillPath(path, Qt::white);
}

QCache<QString, QImage>& cache()
{
    static QCache<QString, QImage> c(256 * 1024);  // KiB of decoded pixels
    return c;
}

ImageLoader& loader()
{
    static ImageLoader l = [](const QString& path) {
        QImageReader r(path);
        r.setAutoTransform(true);
        return r.read();
    };
    return l;
}

}  // namespace

RenderOptions defaultOptions(int code)
{
    RenderOptions o;
    o.spines = formatLayout(code).spines && G().spinesHidden == kFalse;
    return o;
}

void paint(QPainter& p, int code, const RenderOptions& o)
{
    const FormatLayout layout = formatLayout(code);
    if (!layout.code) return;
    const QRectF canvas(QPointF(0, 0), canvasSizeTwips(code));
    p.save();
    p.setClipRect(canvas, Qt::IntersectClip);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    p.setRenderHint(QPainter::TextAntialiasing);

    drawBackground(p, code, canvas);
    // Labels lie below the panels (spines, text page), pictures above them,
    // which is why the text page hides the pictures rather than covering them.
    drawLabels(p, code);
    if (layout.spines && o.spines) {
        drawSpine(p, spineRect(code, Spine::Left), Spine::Left);
        drawSpine(p, spineRect(code, Spine::Right), Spine::Right);
    }
    if (layout.textPage && o.textPage) drawTextPage(p, code, o.textPageBorder);
    drawPictures(p, code, o.hiddenPictures);
    if (o.border) frame(p, canvas, Qt::black);
    if (layout.disc && o.discPreview) drawDiscOutline(p, canvas);
    p.restore();
}

void paintOnDevice(QPainter& p, int code, const RenderOptions& o)
{
    p.save();
    p.scale(p.device()->logicalDpiX() / kTwipsPerInch, p.device()->logicalDpiY() / kTwipsPerInch);
    paint(p, code, o);
    p.restore();
}

QImage renderImage(int code, double dpi, const RenderOptions& o)
{
    const QSizeF twips = canvasSizeTwips(code);
    if (twips.isEmpty() || dpi <= 0) return {};
    const double scale = dpi / kTwipsPerInch;
    QImage img(qCeil(twips.width() * scale), qCeil(twips.height() * scale), QImage::Format_RGB32);
    const int dpm = qRound(dpi / 0.0254);
    img.setDotsPerMeterX(dpm);
    img.setDotsPerMeterY(dpm);
    img.fill(Qt::white);
    QPainter p(&img);
    p.scale(scale, scale);
    paint(p, code, o);
    return img;
}

bool renderPdf(int code, const QString& path, const RenderOptions& o)
{
    const QRectF cm = formatLayout(code).canvasCm;
    if (cm.isEmpty()) return false;
    QPdfWriter writer(path);
    writer.setCreator(QStringLiteral("Jewelcase Studio"));
    writer.setResolution(1200);
    const QPageSize size(QSizeF(cm.width() * 10, cm.height() * 10), QPageSize::Millimeter, QString(),
                         QPageSize::ExactMatch);
    if (!writer.setPageLayout(QPageLayout(size, QPageLayout::Portrait, QMarginsF(0, 0, 0, 0))))
        return false;
    QPainter p;
    if (!p.begin(&writer)) return false;
    paintOnDevice(p, code, o);
    return p.end();
}

void setImageLoader(ImageLoader l)
{
    loader() = std::move(l);
    clearPictureCache();
}

QImage loadPicture(const QString& path)
{
    if (path.isEmpty()) return {};
    const QFileInfo info(path);
    const QString key = path + u'|' + QString::number(info.lastModified().toMSecsSinceEpoch()) + u'|' +
                        QString::number(info.size());
    if (QImage* hit = cache().object(key)) return *hit;
    QImage img = loader() ? loader()(path) : QImage();
    if (img.isNull()) return img;
    const qsizetype cost = std::max<qsizetype>(1, img.sizeInBytes() / 1024);
    auto* copy = new QImage(img);
    if (!cache().insert(key, copy, cost)) return img;  // too big to keep: the cache deleted it
    return img;
}

void clearPictureCache() { cache().clear(); }

QSize actualSizeTwips(const QString& path)
{
    const QImage img = loadPicture(path);
    return img.isNull() ? QSize() : img.size() * kTwipsPerPixel;
}

}  // namespace jk::sheet
