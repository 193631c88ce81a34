#include "output/Calibration.h"
#include "file/Settings.h"
#include "platform/Services.h"
#include <QDateTime>
#include <QLocale>
#include <QPainter>
#include <cmath>

namespace jk::print {

namespace {

constexpr double kHairMm = 0.15;  // crosses and the rulers' base lines
constexpr double kTickMm = 0.1;

// A length as typed: "30", "30.4", "30,4" or "30.4 mm"; false unless positive.
bool readLength(QString text, double* out)
{
    text = text.trimmed();
    if (text.endsWith(QStringLiteral("mm"), Qt::CaseInsensitive)) text = text.chopped(2).trimmed();
    text.replace(u',', u'.');
    bool ok = false;
    const double v = QLocale::c().toDouble(text, &ok);
    if (!ok || !std::isfinite(v) || v <= 0) return false;
    *out = v;
    return true;
}

double hundredths(double v) { return std::round(v * 100) / 100; }

// Drawing in millimetres from the paper's corner on a page device, whose
// painter already carries the calibration.
struct MmPainter {
    QPainter& p;
    double dots;  // per mm

    QPointF at(double x, double y) const { return {x * dots, y * dots}; }
    void line(double x1, double y1, double x2, double y2, double widthMm) const
    {
        p.setPen(QPen(Qt::black, widthMm * dots, Qt::SolidLine, Qt::FlatCap));
        p.drawLine(at(x1, y1), at(x2, y2));
    }
    void circle(double x, double y, double r, double widthMm) const
    {
        p.setPen(QPen(Qt::black, widthMm * dots));
        p.setBrush(Qt::NoBrush);
        p.drawEllipse(at(x, y), r * dots, r * dots);
    }
    void cross(double x, double y, double arm) const
    {
        line(x - arm, y, x + arm, y, kHairMm);
        line(x, y - arm, x, y + arm, kHairMm);
    }
    // Text in a box of millimetres, `points` high.
    void text(const QRectF& mm, int flags, const QString& s, double points, bool bold = false) const
    {
        QFont f(QStringLiteral("Arial"));
        f.setPointSizeF(points);
        f.setBold(bold);
        p.setFont(f);
        p.setPen(Qt::black);
        p.drawText(QRectF(at(mm.left(), mm.top()), at(mm.right(), mm.bottom())), flags, s);
    }
};

QDateTime now()
{
    auto* clock = platform::services().clock;
    return clock ? clock->now() : QDateTime::currentDateTime();
}

// A ruler of kRulerMm from (x, y), across or down, ticks every millimetre
// on the far side of its base line, numbered every centimetre.
void drawRuler(const MmPainter& m, double x, double y, bool across)
{
    const double end = kRulerMm;
    if (across) m.line(x, y, x + end, y, kHairMm);
    else m.line(x, y, x, y + end, kHairMm);
    for (int i = 0; i <= int(end); ++i) {
        const double len = i % 10 == 0 ? 5.0 : i % 5 == 0 ? 3.5 : 2.0;
        if (across) m.line(x + i, y, x + i, y + len, kTickMm);
        else m.line(x, y + i, x + len, y + i, kTickMm);
        if (i % 10 != 0) continue;
        const QString n = QString::number(i);
        if (across) m.text(QRectF(x + i - 5, y + 5.5, 10, 4), Qt::AlignHCenter | Qt::AlignTop, n, 7);
        else m.text(QRectF(x + 5.5, y + i - 2, 10, 4), Qt::AlignLeft | Qt::AlignVCenter, n, 7);
    }
}

}  // namespace

MeasuredCalibration calibrationFromMeasurement(const Measurement& m, const PrinterCalibration& printedWith,
                                               const Texts& texts)
{
    MeasuredCalibration r;
    const QString* typed[] = {&m.crossLeft, &m.crossTop, &m.rulerAcross, &m.rulerDown};
    const Msg names[] = {Msg::MeasureCrossLeft, Msg::MeasureCrossTop, Msg::MeasureRulerAcross, Msg::MeasureRulerDown};
    double v[4];
    for (int i = 0; i < 4; ++i)
        if (!readLength(*typed[i], &v[i])) {
            r.badField = i;
            r.error = texts.msg(Msg::CalibrationNotANumber) + u' ' + texts.msg(names[i]) + QStringLiteral(" (\"") +
                      typed[i]->trimmed() + QStringLiteral("\")");
            return r;
        }
    // The page was drawn at offset + scale * P; the printer then stretched
    // it by k and moved it by d. Solve for the calibration that undoes k and d.
    auto axis = [](double cross, double ruler, double offset, double percent, double* newOffset, double* newPercent) {
        const double scale = percent / 100;
        const double k = ruler / (kRulerMm * scale);
        *newPercent = hundredths(100 / k);
        *newOffset = hundredths(offset + scale * kCrossAMm - cross / k);
    };
    PrinterCalibration c;
    axis(v[0], v[2], printedWith.offsetXMm, printedWith.scaleXPercent, &c.offsetXMm, &c.scaleXPercent);
    axis(v[1], v[3], printedWith.offsetYMm, printedWith.scaleYPercent, &c.offsetYMm, &c.scaleYPercent);
    if (!calibrationInRange(c)) {
        r.error = texts.msg(Msg::CalibrationOutOfRange) + u' ' + describeCalibration(c, texts);
        return r;
    }
    r.calibration = c;
    return r;
}

bool printCalibrationPage(const PrintTarget& target, const Texts& texts, QString* error, const QString& jobName)
{
    PageDevice out;
    if (!out.open(target, QPageLayout::Portrait, jobName.isEmpty() ? texts.msg(Msg::CalibrationTitle) : jobName,
                  texts, error))
        return false;
    const QSizeF paper = out.paper().size(QPageSize::Millimeter);
    if (paper.width() < kCalibrationPaperMm[0] || paper.height() < kCalibrationPaperMm[1]) {
        out.cancel();
        if (error)
            *error = texts.msg(Msg::CalibrationPaperTooSmall) +
                     QStringLiteral(" %1 x %2 mm").arg(paper.width(), 0, 'f', 0).arg(paper.height(), 0, 'f', 0);
        return false;
    }
    const MmPainter m{out.painter(), out.dotsPerMm()};
    out.painter().setRenderHint(QPainter::Antialiasing);

    const double w = paper.width(), h = paper.height();
    const QPointF b = out.printableMm() + QPointF(kCrossBInsetMm, kCrossBInsetMm);
    m.cross(kCrossAMm, kCrossAMm, 6);
    m.circle(kCrossAMm, kCrossAMm, 2.5, kHairMm);
    m.cross(b.x(), b.y(), 4);
    m.cross(w - kCrossCInsetMm, h - kCrossCInsetMm, 6);
    m.text(QRectF(kCrossAMm + 3, kCrossAMm - 8, 6, 5), Qt::AlignLeft | Qt::AlignBottom, QStringLiteral("A"), 10, true);
    m.text(QRectF(b.x() + 1.5, b.y() + 1, 5, 4), Qt::AlignLeft | Qt::AlignTop, QStringLiteral("B"), 8, true);
    m.text(QRectF(w - kCrossCInsetMm - 9, h - kCrossCInsetMm - 8, 6, 5), Qt::AlignRight | Qt::AlignBottom,
           QStringLiteral("C"), 10, true);
    drawRuler(m, kRulerAcrossXMm, kRulerAcrossYMm, true);
    drawRuler(m, kRulerDownXMm, kRulerDownYMm, false);

    const QString printer = out.printerName().isEmpty() ? QStringLiteral("PDF") : out.printerName();
    const QString lines = printer + u'\n' + QLocale().toString(now(), QLocale::LongFormat) + u'\n' + out.paper().name() +
                          QStringLiteral(" (%1 x %2 mm)").arg(w, 0, 'f', 1).arg(h, 0, 'f', 1) + u'\n' +
                          describeCalibration(out.calibration(), texts);
    const double left = 45, right = w - 15;
    m.text(QRectF(left, 70, right - left, 10), Qt::AlignLeft | Qt::AlignTop, texts.msg(Msg::CalibrationTitle), 16, true);
    m.text(QRectF(left, 82, right - left, 25), Qt::AlignLeft | Qt::AlignTop, lines, 10);
    m.text(QRectF(left, 110, right - left, 50), Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
           texts.msg(Msg::CalibrationPageHelp).arg(kCrossAMm).arg(kCrossBInsetMm).arg(kCrossCInsetMm), 10);
    return out.finish(error);
}

bool printTestOutline(const DiscStock& stock, const PrintTarget& target, const Texts& texts, QString* error,
                      const QString& jobName)
{
    PageDevice out;
    const QString job = jobName.isEmpty() ? QString(texts.msg(Msg::TestPrintOutline)).remove(u'&') + QStringLiteral(" - ") + stock.name
                                          : jobName;
    if (!out.open(target, QPageLayout::Portrait, job, texts, error)) return false;
    const QSizeF paper = out.paper().size(QPageSize::Millimeter);
    if (!discFitsPaper(stock, paper)) {
        out.cancel();
        if (error) *error = texts.msg(Msg::PrintDiscOffPaper) + u' ' + stock.name;
        return false;
    }
    const MmPainter m{out.painter(), out.dotsPerMm()};
    out.painter().setRenderHint(QPainter::Antialiasing);
    const double cx = stock.xMm + kDiscCanvasMm / 2, cy = stock.yMm + kDiscCanvasMm / 2;
    m.circle(cx, cy, kDiscRadiusMm, 0.2);
    m.circle(cx, cy, kDiscHoleRadiusMm, 0.2);
    m.cross(cx, cy, 5);

    // The note below the disc, or above it when the disc is low on the page.
    const QString printer = out.printerName().isEmpty() ? QStringLiteral("PDF") : out.printerName();
    const QString note = texts.msg(Msg::TestOutlineNote).arg(stock.name) + u'\n' + printer + QStringLiteral(", ") +
                         describeCalibration(out.calibration(), texts);
    const double below = cy + kDiscRadiusMm + 6;
    const double top = below + 20 < paper.height() ? below : out.printableMm().y() + 5;
    m.text(QRectF(15, top, paper.width() - 30, 20), Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, note, 9);
    return out.finish(error);
}

}  // namespace jk::print
