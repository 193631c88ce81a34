#include "output/Export.h"
#include "platform/Ghostscript.h"
#include "model/AppContext.h"
#include "model/Formats.h"
#include "model/Project.h"
#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageWriter>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QSvgGenerator>
#include <QTemporaryDir>
#include <memory>
#include <chrono>
#include <future>

namespace jk::exporting {

namespace {

struct FormatName {
    ImageFormat format;
    const char* suffix;
    const char* alias;
    const char* filter;
};
const FormatName kFormats[] = {
    {ImageFormat::Bmp, "bmp", nullptr, "Bitmap (*.bmp)"},   {ImageFormat::Jpeg, "jpg", "jpeg", "JPEG (*.jpg *.jpeg)"},
    {ImageFormat::Eps, "eps", nullptr, "Postscript (*.eps)"}, {ImageFormat::Tiff, "tif", "tiff", "TIFF (*.tif *.tiff)"},
    {ImageFormat::Png, "png", nullptr, "PNG (*.png)"},      {ImageFormat::Pdf, "pdf", nullptr, "PDF (*.pdf)"},
    {ImageFormat::Svg, "svg", nullptr, "SVG (*.svg)"},
};

constexpr int kJpegQuality = 95;
constexpr int kPngQuality = 50;
constexpr int kVectorDpi = 1200;  // placement in PDF to 0.02 mm; pictures drawn at up to this resolution
constexpr double kPointsPerCm = 72 / 2.54;

bool isRaster(ImageFormat f)
{
    return f == ImageFormat::Bmp || f == ImageFormat::Jpeg || f == ImageFormat::Tiff || f == ImageFormat::Png;
}

QByteArray encodeImage(const QImage& img, ImageFormat f, QString* error)
{
    QBuffer buf;
    buf.open(QIODevice::WriteOnly);
    QImageWriter w(&buf, suffixOf(f).toLatin1());
    if (f == ImageFormat::Jpeg) w.setQuality(kJpegQuality);
    if (f == ImageFormat::Tiff) w.setCompression(1);  // LZW
    // zlib's middle level: as small as its default on sheets, in half the time.
    if (f == ImageFormat::Png) w.setQuality(kPngQuality);
    if (img.isNull() || !w.write(img)) {
        *error = img.isNull() ? QStringLiteral("no memory for the image") : w.errorString();
        return {};
    }
    return buf.data();
}

// PDF pages come in whole points from Qt; the page box is put right in the
// file, keeping its length so the cross-reference offsets stay valid. Qt
// draws from the top of its page, so the exact box keeps that top edge.
void exactMediaBox(QByteArray& pdf, QSizeF points)
{
    static const QByteArray key = "/MediaBox [";
    const qsizetype at = pdf.indexOf(key);
    const qsizetype end = at < 0 ? -1 : pdf.indexOf(']', at);
    if (end < 0) return;
    const qsizetype from = at + key.size();
    const QList<QByteArray> box = pdf.mid(from, end - from).simplified().split(' ');
    if (box.size() != 4) return;
    const double top = box[3].toDouble();
    const qsizetype room = end - from;
    for (int decimals = 6; decimals >= 0; --decimals) {
        QByteArray exact = "0 " + QByteArray::number(top - points.height(), 'f', decimals) + ' ' +
                           QByteArray::number(points.width(), 'f', decimals) + ' ' + box[3];
        if (exact.size() > room) continue;
        exact.append(QByteArray(room - exact.size(), ' '));
        pdf.replace(from, room, exact);
        return;
    }
}

QByteArray pdfBytes(const Project& project, const Page& page, QString* error)
{
    const QRectF cm = sheet::formatLayout(page.code).canvasCm;
    QBuffer buf;
    buf.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buf);
        writer.setCreator(QStringLiteral("Jewelcase Studio"));
        writer.setTitle(QFileInfo(page.path).completeBaseName());
        writer.setResolution(kVectorDpi);
        const QPageSize size(QSizeF(cm.width() * 10, cm.height() * 10), QPageSize::Millimeter, QString(),
                             QPageSize::ExactMatch);
        writer.setPageLayout(QPageLayout(size, QPageLayout::Portrait, QMarginsF(0, 0, 0, 0)));
        QPainter p;
        if (!p.begin(&writer)) {
            *error = QStringLiteral("the PDF writer could not start");
            return {};
        }
        sheet::paintOnDevice(p, project, page.code, page.options);
        p.end();
    }
    QByteArray pdf = buf.data();
    exactMediaBox(pdf, cm.size() * kPointsPerCm);
    return pdf;
}

QByteArray svgBytes(const Project& project, const Page& page, QString* error)
{
    // One unit a twip: the drawing path's own coordinates, and the size in
    // millimetres to 0.01 mm.
    const QSizeF twips = sheet::canvasSizeTwips(page.code);
    QBuffer buf;
    buf.open(QIODevice::WriteOnly);
    QSvgGenerator svg;
    svg.setOutputDevice(&buf);
    svg.setResolution(int(sheet::kTwipsPerInch));
    svg.setSize(twips.toSize());
    svg.setViewBox(QRectF(QPointF(0, 0), twips));
    svg.setTitle(QFileInfo(page.path).completeBaseName());
    svg.setDescription(QStringLiteral("Jewelcase Studio"));
    QPainter p;
    if (!p.begin(&svg)) {
        *error = QStringLiteral("the SVG writer could not start");
        return {};
    }
    sheet::paintOnDevice(p, project, page.code, page.options);
    p.end();
    return buf.data();
}

QString notWritten(const Texts& t, const QString& path, const QString& why)
{
    return t.msg(Msg::ExportNotWritten) + u' ' + QDir::toNativeSeparators(path) +
           (why.isEmpty() ? QString() : QStringLiteral(": ") + why);
}

QString ghostscriptError(const platform::GhostscriptResult& r, const Texts& t)
{
    switch (r.status) {
    case platform::GhostscriptResult::Missing: return t.msg(Msg::GhostscriptMissing);
    case platform::GhostscriptResult::TimedOut: return t.msg(Msg::ExportTookTooLong);
    default: return t.msg(Msg::GhostscriptFailed) + u' ' + r.detail;
    }
}

// The pages' bytes in the format; false with the message.
bool pageBytes(const Project& project, const std::vector<Page>& pages, ImageFormat format, int dpi,
               const Texts& t, std::vector<QByteArray>& out, QString* error)
{
    out.assign(pages.size(), {});
    if (isRaster(format)) {
        // Drawing shares the picture cache, so it stays on this thread; the
        // images are encoded side by side, and meanwhile windows keep
        // painting (input waits).
        std::vector<QImage> images;
        for (const Page& page : pages) images.push_back(sheet::renderImage(project, page.code, dpi, page.options));
        std::vector<QString> errors(pages.size());
        std::vector<std::future<void>> workers;
        for (std::size_t i = 0; i < pages.size(); ++i)
            workers.push_back(std::async(std::launch::async, [&, i] { out[i] = encodeImage(images[i], format, &errors[i]); }));
        for (std::future<void>& w : workers)
            while (w.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready)
                QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        for (std::size_t i = 0; i < pages.size(); ++i)
            if (out[i].isEmpty()) {
                *error = notWritten(t, pages[i].path, errors[i]);
                return false;
            }
        return true;
    }
    if (format == ImageFormat::Svg || format == ImageFormat::Pdf) {
        for (std::size_t i = 0; i < pages.size(); ++i) {
            QString why;
            out[i] = format == ImageFormat::Svg ? svgBytes(project, pages[i], &why) : pdfBytes(project, pages[i], &why);
            if (out[i].isEmpty()) {
                *error = notWritten(t, pages[i].path, why);
                return false;
            }
        }
        return true;
    }
    // EPS: each page's PDF through Ghostscript, in a scratch folder that
    // goes with everything in it.
    const QTemporaryDir scratch(QDir::tempPath() + QStringLiteral("/jewlkit-export-XXXXXX"));
    if (!scratch.isValid()) {
        *error = notWritten(t, pages.front().path, scratch.errorString());
        return false;
    }
    QList<platform::EpsConversion> jobs;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const QString stem = scratch.filePath(QString::number(i));
        QFile pdf(stem + QStringLiteral(".pdf"));
        QString why;
        const QByteArray bytes = pdfBytes(project, pages[i], &why);
        if (bytes.isEmpty() || !pdf.open(QIODevice::WriteOnly) || pdf.write(bytes) != bytes.size()) {
            *error = notWritten(t, pages[i].path, why.isEmpty() ? pdf.errorString() : why);
            return false;
        }
        pdf.close();
        jobs.append({pdf.fileName(), stem + QStringLiteral(".eps")});
    }
    const platform::GhostscriptResult r = platform::convertPdfToEps(jobs, dpi);
    if (r.status != platform::GhostscriptResult::Done) {
        *error = ghostscriptError(r, t);
        return false;
    }
    for (std::size_t i = 0; i < pages.size(); ++i) {
        QFile eps(jobs[qsizetype(i)].eps);
        if (!eps.open(QIODevice::ReadOnly)) {
            *error = notWritten(t, pages[i].path, eps.errorString());
            return false;
        }
        out[i] = eps.readAll();
    }
    return true;
}

}  // namespace

QString dialogFilter()
{
    QStringList parts;
    for (const FormatName& f : kFormats) parts << QLatin1String(f.filter);
    return parts.join(QStringLiteral(";;"));
}

std::optional<ImageFormat> formatOfSuffix(const QString& suffix)
{
    for (const FormatName& f : kFormats)
        if (suffix.compare(QLatin1String(f.suffix), Qt::CaseInsensitive) == 0 ||
            (f.alias && suffix.compare(QLatin1String(f.alias), Qt::CaseInsensitive) == 0))
            return f.format;
    return std::nullopt;
}

std::optional<ImageFormat> formatOfName(const QString& path) { return formatOfSuffix(QFileInfo(path).suffix()); }

QString suffixOf(ImageFormat format)
{
    for (const FormatName& f : kFormats)
        if (f.format == format) return QLatin1String(f.suffix);
    return {};
}

QString exportName(const QString& chosen)
{
    return formatOfName(chosen) ? chosen : chosen + u'.' + QLatin1String(kDefaultSuffix);
}

std::vector<Page> sheetPages(const Project& project, int code, const QString& path)
{
    return sheetPages(project, code, path, sheet::defaultOptions(project, code));
}

std::vector<Page> sheetPages(const Project& project, int code, const QString& path, const sheet::RenderOptions& shown)
{
    sheet::RenderOptions o;
    o.spines = shown.spines;
    o.stacking = shown.stacking;
    o.pageStacking = shown.pageStacking;
    const sheet::FormatLayout layout = sheet::formatLayout(code);
    if (layout.disc) {
        o.border = false;
        o.background = false;
    }
    if (!layout.textPage) return {{code, o, path}};
    // NAME.ext: the text page as NAME1.ext (alone, as it prints: nothing
    // under it is drawn) and the picture page as NAME2.ext.
    const QFileInfo info(path);
    const QString suffix = info.suffix().isEmpty() ? QString() : u'.' + info.suffix();
    const QString stem = path.left(path.size() - suffix.size());
    Page text{code, o, stem + u'1' + suffix};
    text.options.textPage = true;
    return {text, {code, o, stem + u'2' + suffix}};
}

Result writePages(const Project& project, const std::vector<Page>& pages, ImageFormat format, int dpi,
                  const Texts& t)
{
    Result r;
    r.ok = pages.empty();
    if (r.ok) return r;
    auto failed = [&](const QString& path, const QString& why) {
        r.error = notWritten(t, path, why);
        return r;
    };
    // Every target is opened first: a folder that cannot be written fails
    // before any work, and nothing is in place until everything is written.
    std::vector<std::unique_ptr<QSaveFile>> files;
    for (const Page& page : pages) {
        auto f = std::make_unique<QSaveFile>(page.path);
        if (!f->open(QIODevice::WriteOnly)) return failed(page.path, f->errorString());
        files.push_back(std::move(f));
    }
    std::vector<QByteArray> bytes;
    if (!pageBytes(project, pages, format, dpi, t, bytes, &r.error)) return r;
    for (std::size_t i = 0; i < files.size(); ++i)
        if (files[i]->write(bytes[i]) != bytes[i].size()) return failed(pages[i].path, files[i]->errorString());
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (!files[i]->commit()) return failed(pages[i].path, files[i]->errorString());
        r.written << pages[i].path;
    }
    r.ok = true;
    return r;
}

}  // namespace jk::exporting
