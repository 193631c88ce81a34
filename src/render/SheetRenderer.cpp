#include "render/SheetRenderer.h"
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

// A text block, field or text-page block, drawn like the label that shows it:
// optional opaque back colour, word-wrapped text with its alignment, optional
// single-line border.
void drawTextObject(QPainter& p, const TextStyle& s, const QString& text, QPointF origin, int border)
{
    const QRectF r(origin.x() + s.left, origin.y() + s.top, s.width, s.height);
    if (r.width() <= 0 || r.height() <= 0) return;
    if (s.backStyle == 1) p.fillRect(r, winColor(s.backColor));
    p.save();
    p.setClipRect(r, Qt::IntersectClip);
    p.setFont(textFont(s));
    p.setPen(winColor(s.foreColor));
    const int h = s.alignment == 1 ? Qt::AlignRight : s.alignment == 2 ? Qt::AlignHCenter : Qt::AlignLeft;
    p.drawText(r, h | Qt::AlignTop | Qt::TextWordWrap, displayText(text));
    p.restore();
    if (border == 1) frame(p, r, Qt::black);
}

// The size in device pixels that a rectangle of twips covers.
QSize devicePixels(const QPainter& p, const QRectF& twips)
{
    const QRectF d = p.transform().mapRect(twips);
    const qreal dpr = p.device() ? p.device()->devicePixelRatioF() : 1.0;
    return QSize(std::max(1, qCeil(d.width() * dpr)), std::max(1, qCeil(d.height() * dpr)));
}

// What one paint needs besides the painter.
struct Scene {
    const Project& project;
    int code;
    const RenderOptions& o;
    const FieldValues& fields;
};

void drawBackground(QPainter& p, const Scene& s, const QRectF& canvas)
{
    p.fillRect(canvas, Qt::white);
    if (!s.o.background) return;
    const Background b = parseBackground(s.project.background(s.code).text);
    if (b.kind == Background::Colour) {
        p.fillRect(canvas, winColor(b.colour));
    } else if (b.kind == Background::Picture) {
        const QImage img = pictureAtSize(b.file, devicePixels(p, canvas));
        if (!img.isNull()) p.drawImage(canvas, img);
    }
}

void drawMissingPicture(QPainter& p, const QRectF& r)
{
    p.save();
    p.fillRect(r, QColor(235, 235, 235));
    QPen pen(QColor(150, 150, 150));
    pen.setWidthF(kLine);
    p.setPen(pen);
    p.drawLine(r.topLeft(), r.bottomRight());
    p.drawLine(r.topRight(), r.bottomLeft());
    p.restore();
    frame(p, r, QColor(150, 150, 150));
}

void drawPicture(QPainter& p, const Scene& s, int index, int border)
{
    const PictureRecord& r = s.project.pictures().at(index);
    const QRectF rect = objectRectTwips(s.project, s.code, {ObjKind::Picture, index});
    if (rect.isEmpty()) return;
    if (r.file.startsWith(u'~')) {
        // A plain colour chosen in the picture dialog.
        p.fillRect(rect, winColor(parseBackground(r.file).colour));
    } else {
        const QImage img = pictureAtSize(r.file, devicePixels(p, rect));
        if (!img.isNull()) p.drawImage(rect, img);
        else if (s.o.missingPictureMarks) drawMissingPicture(p, rect);
    }
    if (border == 1) frame(p, rect, Qt::black);
}

void drawObject(QPainter& p, const Scene& s, ObjectRef ref, QPointF origin)
{
    const int border = s.o.shownBorder.value(ref, recordBorder(s.project, ref));
    if (ref.kind == ObjKind::Picture) {
        drawPicture(p, s, ref.index, border);
        return;
    }
    if (const TextStyle* st = s.project.style(ref))
        drawTextObject(p, *st, shownText(s.project, ref, s.fields), origin, border);
}

void drawSpine(QPainter& p, const Scene& s, const QRect& panel, Spine side)
{
    const SpineFont& sf = s.project.spineFont();
    p.save();
    p.setClipRect(panel, Qt::IntersectClip);
    p.fillRect(panel, winColor(sf.backColor));
    frame(p, panel, Qt::black);
    const QString line =
        spineLine(s.project.spineText(), s.fields.spineNumber.value_or(s.project.spineNumberText()));
    if (!line.isEmpty()) {
        p.setFont(textFont(sf.name.isEmpty() ? QStringLiteral("Arial") : sf.name, sf.size, sf.bold != 0,
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

void drawTextPage(QPainter& p, const Scene& s)
{
    const QRect panel = textPageRect(s.code);
    p.fillRect(panel, Qt::white);
    for (const ObjectRef& ref : pageStacking(s.project, s.code, s.o)) drawObject(p, s, ref, panel.topLeft());
    if (s.o.textPageBorder) frame(p, panel, Qt::black);
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

struct PictureCache {
    QCache<QString, QImage> sources{96 * 1024};  // KiB of full decoded images
    QCache<QString, QImage> scaled{128 * 1024};  // KiB of copies at a device size
    // By file key; invalid: cannot be read. Every file ever shown gets one,
    // and a day of opening projects names many: the oldest go.
    QCache<QString, QSize> sizes{kMaxKnownPictureFiles};
    int decodes = 0;
};

PictureCache& cache()
{
    static PictureCache c;
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

// A file's identity: its path, time and size, so a changed file is read again.
QString fileKey(const QString& path)
{
    if (path.isEmpty() || path.startsWith(u'~')) return {};
    const QFileInfo info(path);
    if (!info.exists()) return path + QStringLiteral("|missing");
    return path + u'|' + QString::number(info.lastModified().toMSecsSinceEpoch()) + u'|' +
           QString::number(info.size());
}

qsizetype costKiB(const QImage& img) { return std::max<qsizetype>(1, img.sizeInBytes() / 1024); }

QImage loadByKey(const QString& path, const QString& key)
{
    PictureCache& c = cache();
    if (const QSize* known = c.sizes.object(key); known && !known->isValid()) return {};
    if (QImage* hit = c.sources.object(key)) return *hit;
    ++c.decodes;
    QImage img = loader() ? loader()(path) : QImage();
    c.sizes.insert(key, new QSize(img.isNull() ? QSize() : img.size()));
    if (!img.isNull()) c.sources.insert(key, new QImage(img), costKiB(img));  // dropped at once when too big
    return img;
}

}  // namespace

std::vector<ObjectRef> canvasStacking(const Project& project, int code, const RenderOptions& o)
{
    std::vector<ObjectRef> out;
    QSet<ObjectRef> seen;
    for (const ObjectRef& ref : o.stacking)
        if (ref.kind != ObjKind::PageText && project.exists(code, ref) && !seen.contains(ref)) {
            seen.insert(ref);
            out.push_back(ref);
        }
    const std::pair<ObjKind, int> kinds[] = {{ObjKind::Picture, project.pictures().count()},
                                             {ObjKind::Text, project.freeText().count()},
                                             {ObjKind::CharField, project.charFields().count()},
                                             {ObjKind::NumField, project.numFields().count()}};
    for (const auto& [kind, count] : kinds)
        for (int i = 1; i <= count; ++i) {
            const ObjectRef ref{kind, i};
            if (project.exists(code, ref) && !seen.contains(ref)) out.push_back(ref);
        }
    return out;
}

std::vector<ObjectRef> pageStacking(const Project& project, int code, const RenderOptions& o)
{
    std::vector<ObjectRef> out;
    if (!formatLayout(code).textPage) return out;
    QSet<ObjectRef> seen;
    for (const ObjectRef& ref : o.pageStacking)
        if (ref.kind == ObjKind::PageText && project.exists(code, ref) && !seen.contains(ref)) {
            seen.insert(ref);
            out.push_back(ref);
        }
    for (int i = 1; i <= project.pageText().count(); ++i) {
        const ObjectRef ref{ObjKind::PageText, i};
        if (project.exists(code, ref) && !seen.contains(ref)) out.push_back(ref);
    }
    return out;
}

Hit hitTest(const Project& project, int code, const RenderOptions& o, QPoint pt)
{
    const FormatLayout layout = formatLayout(code);
    Hit hit;
    if (!layout.code || !QRect(QPoint(0, 0), canvasSizeTwips(code).toSize()).contains(pt)) return hit;
    if (layout.textPage && o.textPage && textPageRect(code).contains(pt)) {
        // The text page covers the canvas: only its own blocks answer.
        const auto blocks = pageStacking(project, code, o);
        for (auto it = blocks.rbegin(); it != blocks.rend(); ++it)
            if (objectRectTwips(project, code, *it).contains(pt)) return {Hit::Object, *it};
        return hit;
    }
    if (layout.spines && o.spines &&
        (spineRect(code, Spine::Left).contains(pt) || spineRect(code, Spine::Right).contains(pt)))
        return {Hit::Panel, {}};
    const auto objects = canvasStacking(project, code, o);
    for (auto it = objects.rbegin(); it != objects.rend(); ++it) {
        if (it->kind == ObjKind::Picture && o.hiddenPictures.contains(it->index)) continue;
        if (objectRectTwips(project, code, *it).contains(pt)) return {Hit::Object, *it};
    }
    return hit;
}

RenderOptions defaultOptions(const Project& project, int code)
{
    RenderOptions o;
    o.spines = formatLayout(code).spines && !project.spinesHidden();
    return o;
}

void paint(QPainter& p, const Project& project, int code, const RenderOptions& o, const FieldValues& fields)
{
    const Scene scene{project, code, o, fields};
    const FormatLayout layout = formatLayout(code);
    if (!layout.code) return;
    const QRectF canvas(QPointF(0, 0), canvasSizeTwips(code));
    p.save();
    p.setClipRect(canvas, Qt::IntersectClip);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    p.setRenderHint(QPainter::TextAntialiasing);

    drawBackground(p, scene, canvas);
    // The canvas's objects lie below the panels (spines, text page); the
    // text page also hides the sheet's pictures, which matters for presses.
    // Under a text page that covers the whole canvas nothing would show:
    // leaving them out keeps hidden text out of printed PDFs.
    const bool covered = layout.textPage && o.textPage && QRectF(textPageRect(code)).contains(canvas);
    for (const ObjectRef& ref : covered ? std::vector<ObjectRef>{} : canvasStacking(project, code, o))
        if (ref.kind != ObjKind::Picture || !o.hiddenPictures.contains(ref.index)) drawObject(p, scene, ref, {});
    if (layout.spines && o.spines) {
        drawSpine(p, scene, spineRect(code, Spine::Left), Spine::Left);
        drawSpine(p, scene, spineRect(code, Spine::Right), Spine::Right);
    }
    if (layout.textPage && o.textPage) drawTextPage(p, scene);
    if (o.border) frame(p, canvas, Qt::black);
    if (layout.disc && o.discPreview) drawDiscOutline(p, canvas);
    p.restore();
}

void paintOnDevice(QPainter& p, const Project& project, int code, const RenderOptions& o, const FieldValues& fields)
{
    p.save();
    p.scale(p.device()->logicalDpiX() / kTwipsPerInch, p.device()->logicalDpiY() / kTwipsPerInch);
    paint(p, project, code, o, fields);
    p.restore();
}

QImage renderImage(const Project& project, int code, double dpi, const RenderOptions& o, const FieldValues& fields)
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
    paint(p, project, code, o, fields);
    return img;
}

bool renderPdf(const Project& project, int code, const QString& path, const RenderOptions& o)
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
    paintOnDevice(p, project, code, o);
    return p.end();
}

void setImageLoader(ImageLoader l)
{
    loader() = std::move(l);
    clearPictureCache();
}

QImage loadPicture(const QString& path)
{
    const QString key = fileKey(path);
    return key.isEmpty() ? QImage() : loadByKey(path, key);
}

QSize pictureSize(const QString& path)
{
    const QString key = fileKey(path);
    if (key.isEmpty()) return {};
    if (const QSize* known = cache().sizes.object(key)) return *known;
    return loadByKey(path, key).size();
}

QImage pictureAtSize(const QString& path, QSize px)
{
    const QString key = fileKey(path);
    if (key.isEmpty()) return {};
    const QSize full = pictureSize(path);
    if (!full.isValid()) return {};
    if (px.width() >= full.width() || px.height() >= full.height()) return loadByKey(path, key);
    PictureCache& c = cache();
    const QString scaledKey = key + u'@' + QString::number(px.width()) + u'x' + QString::number(px.height());
    if (QImage* hit = c.scaled.object(scaledKey)) return *hit;
    const QImage src = loadByKey(path, key);
    if (src.isNull()) return {};
    QImage img = src.scaled(px, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    c.scaled.insert(scaledKey, new QImage(img), costKiB(img));
    return img;
}

void clearPictureCache()
{
    releaseDecodedPictures();
    cache().sizes.clear();
}

void releaseDecodedPictures()
{
    PictureCache& c = cache();
    c.sources.clear();
    c.scaled.clear();
}

int pictureDecodeCount() { return cache().decodes; }

QSize actualSizeTwips(const QString& path)
{
    const QImage img = loadPicture(path);
    return img.isNull() ? QSize() : img.size() * kTwipsPerPixel;
}

}  // namespace jk::sheet
