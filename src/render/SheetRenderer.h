#pragma once
// The one drawing path of a sheet. The window, the disc preview, printing and
// export all paint through paint(), which works in the canvas's twips; each
// caller only chooses the scale, so text stays vector text on a printer or in
// a PDF and pictures are drawn from their full-resolution source.
#include "render/SheetLayout.h"
#include "render/SheetObjects.h"
#include <QHash>
#include <QImage>
#include <QSet>
#include <QString>
#include <functional>
#include <vector>

class QPainter;

namespace jk::sheet {

struct RenderOptions {
    bool spines = true;          // the inlay's spines are shown
    bool textPage = false;       // the text page is shown (booklet, jacket)
    bool textPageBorder = true;  // the shown text page has its single line
    bool border = true;          // the canvas's single-line border
    bool background = true;      // the sheet's background picture or colour (else white)
    bool discPreview = false;    // the disc label's hole and outside in white
    QSet<int> hiddenPictures;    // picture slots hidden on this sheet
    // Stacking of the canvas's objects (pictures, text blocks, fields) and
    // of the text page's blocks, back to front. Objects of the sheet that a
    // list does not name lie in front of the listed ones, in the order a
    // sheet restores them: pictures, text blocks, character fields,
    // numeric fields, each kind by index.
    std::vector<ObjectRef> stacking;
    std::vector<ObjectRef> pageStacking;
    // Border styles shown instead of the stored ones (the selection mark).
    QHash<ObjectRef, int> shownBorder;
    // A picture that cannot be shown is drawn as a crossed grey box, so it
    // can still be found and selected on screen.
    bool missingPictureMarks = false;
};

// The objects as they are drawn, back to front: the canvas's, and the text
// page's blocks. Deleted objects and other sheets' records are left out.
std::vector<ObjectRef> canvasStacking(const Project& project, int code, const RenderOptions& o);
std::vector<ObjectRef> pageStacking(const Project& project, int code, const RenderOptions& o);

// What a press at a point of the canvas (twips) meets: the front-most object
// under it, a panel that covers the objects there (spine, text page), or
// the bare canvas.
struct Hit {
    enum Kind { Canvas, Object, Panel } kind = Canvas;
    ObjectRef ref;
};
Hit hitTest(const Project& project, int code, const RenderOptions& o, QPoint twips);

// The options a sheet has when nothing in a window says otherwise.
RenderOptions defaultOptions(const Project& project, int code);

// Paints the sheet of the format with the painter already mapping canvas
// twips to the device (origin at the canvas's top-left corner). Draws, in
// this order: background, the canvas's objects in their stacking order,
// spines, text page with its blocks, border, disc preview. Everything is
// clipped to the canvas. Fields show what `fields` names for them (a copy
// of a print run), else what their records show.
void paint(QPainter& p, const Project& project, int code, const RenderOptions& o, const FieldValues& fields = {});

// Paints on any device at its own resolution, the canvas's corner at the
// painter's origin: sets up the twips scale for the device, then paint().
void paintOnDevice(QPainter& p, const Project& project, int code, const RenderOptions& o,
                   const FieldValues& fields = {});

// The sheet as an image at dpi dots per inch (96 is real size on screen).
QImage renderImage(const Project& project, int code, double dpi, const RenderOptions& o,
                   const FieldValues& fields = {});
inline QImage renderImage(const Project& project, int code, double dpi)
{
    return renderImage(project, code, dpi, defaultOptions(project, code));
}

// The sheet as a one-page PDF at real size: the page is the canvas (PDF
// pages come in whole points, so it may be up to 0.18 mm smaller), no
// margins, text as text. False when the file cannot be written.
bool renderPdf(const Project& project, int code, const QString& path, const RenderOptions& o);
inline bool renderPdf(const Project& project, int code, const QString& path)
{
    return renderPdf(project, code, path, defaultOptions(project, code));
}

// The twips-to-pixels factor of the disc preview's radii.
inline double pixelToTwips(double px) { return px * kTwipsPerPixel; }

// Pictures come from files through this loader; the imaging seam replaces
// it with one that knows more formats. A file is decoded once: its size and
// its copies scaled for the screen are kept, the full image while there is
// room, and a file that fails is not tried again until it changes. Sizes
// are kept for the kMaxKnownPictureFiles files asked for last.
inline constexpr int kMaxKnownPictureFiles = 1024;
using ImageLoader = std::function<QImage(const QString& path)>;
void setImageLoader(ImageLoader loader);
// The full-resolution image; null when the file cannot be read.
QImage loadPicture(const QString& path);
// The image scaled (smoothly, once) to a size in device pixels; the full
// image when that size is not smaller than it.
QImage pictureAtSize(const QString& path, QSize devicePixels);
// The image's size in pixels; invalid when it cannot be read.
QSize pictureSize(const QString& path);
void clearPictureCache();
// Drops the decoded images, full and scaled, and keeps the sizes: when no
// sheet shows a project any more, its pictures need not fill the cache's
// budget until other pictures push them out.
void releaseDecodedPictures();
// How many times the loader has been called (each call is one decode).
int pictureDecodeCount();

// A picture's actual size in twips (one image pixel per screen pixel).
QSize actualSizeTwips(const QString& path);

}  // namespace jk::sheet
