#pragma once
// Picture files in: the imaging seam. Qt's readers take what they know
// (BMP, JPEG, GIF, TIFF, PNG ...); PCX, PhotoCD, WMF and WPG are decoded by
// ImageMagick in a short-lived helper process (jewlkit-imaging) and EPS is
// rasterised by Ghostscript with -dSAFER, also as a separate process. Both
// processes are stopped when they run past the time limit, so a hostile file
// can neither crash the program nor hang it: it simply gives no picture.
//
// Every function here may be called from any thread.
#include <QImage>
#include <QSize>
#include <QString>

namespace jk::platform {

// The picture dialog's file pattern (extensions match ignoring case).
inline constexpr char kPicturePattern[] = "*.BMP;*.PCX;*.JPG;*.EPS;*.TIF;*.WMF;*.PCD;*.GIF;*.WPG";

// Which decoder a file goes to. Decided by the file's first bytes; the
// name's extension only counts when the bytes say nothing.
enum class PictureFormat { Unknown, Qt, Pcx, PhotoCd, Wmf, Wpg, Eps };
PictureFormat pictureFormat(const QString& path);

struct PictureLimits {
    int allocationMb = 256;  // largest decoded picture, at 4 bytes a pixel
    int maxSide = 30000;     // widest or tallest picture, in pixels
    qint64 maxFileMb = 256;  // larger files are not read at all
    int timeLimitMs = 20000; // a decoder process running longer is stopped
    int vectorDpi = 96;      // EPS and WMF are drawn at this resolution
};
PictureLimits pictureLimits();
void setPictureLimits(const PictureLimits& limits);

// The picture of a file, or a null image (with the reason in *error) when
// the file is missing, empty, unreadable, too big or refused by its decoder.
// A file that failed is remembered (by path, size and time) and not tried
// again until it changes.
QImage loadPicture(const QString& path, QString* error = nullptr);

// The picture's size in pixels, as loadPicture would give it, read from the
// file's header where the format allows (everything but PhotoCD, WMF and WPG,
// which ask the helper without decoding the pixels). Invalid when unreadable
// or when loadPicture already failed on the file.
QSize pictureSize(const QString& path);

// Forgets the files that failed (tests; a user replacing a file in place
// changes its time anyway).
void forgetFailedPictures();

}  // namespace jk::platform
