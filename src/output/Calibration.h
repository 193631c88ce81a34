#pragma once
// Printer calibration: the page the user measures with a ruler, the
// calibration those measurements give, and the disc-label test outline held
// over a label sheet before a label is spent. Both pages go through a
// PageDevice, so on a printer they come out calibrated like everything else.
#include "model/AppContext.h"
#include "output/DiscStock.h"
#include "output/PageDevice.h"
#include <QString>
#include <optional>

namespace jk::print {

// The calibration page, in millimetres from the paper's top-left corner.
constexpr double kCrossAMm = 30;       // cross A, from the left and the top edge: what the user measures
constexpr double kCrossBInsetMm = 10;  // cross B, from the printable area's corner
constexpr double kCrossCInsetMm = 25;  // cross C, from the right and the bottom edge
constexpr double kRulerMm = 150;
constexpr double kRulerAcrossXMm = 40, kRulerAcrossYMm = 50;  // the horizontal ruler's 0; ticks below it
constexpr double kRulerDownXMm = 20, kRulerDownYMm = 70;      // the vertical ruler's 0; ticks right of it
constexpr double kCalibrationPaperMm[2] = {200, 250};         // the least paper the page fits on

// What the user read off a calibration page, as typed.
struct Measurement {
    QString crossLeft, crossTop;     // cross A from the paper's left and top edges
    QString rulerAcross, rulerDown;  // the printed length of each ruler from 0 to 150
};

struct MeasuredCalibration {
    std::optional<PrinterCalibration> calibration;
    QString error;      // why there is none, one line
    int badField = -1;  // 0-3 in Measurement's order when a value is not a length
};

// The calibration that puts the page's marks where they belong, for a page
// that was printed with `printedWith` (so measuring a calibrated page
// refines its calibration). Empty, non-numeric or non-positive values, and
// results beyond calibrationInRange(), give an error instead.
MeasuredCalibration calibrationFromMeasurement(const Measurement& m, const PrinterCalibration& printedWith,
                                               const Texts& texts);

// The calibration page: crosses A, B and C, two 150 mm rulers with
// millimetre ticks, the printer's name, the date, the calibration it was
// printed with and what to measure. False with a reason.
bool printCalibrationPage(const PrintTarget& target, const Texts& texts, QString* error, const QString& jobName = {});

// Only the outline of the disc label's printed area where `stock` puts it:
// the circles of 59 and 16.4 mm around a centre cross. False with a reason,
// also when the disc would lie partly off the paper.
bool printTestOutline(const DiscStock& stock, const PrintTarget& target, const Texts& texts, QString* error,
                      const QString& jobName = {});

}  // namespace jk::print
