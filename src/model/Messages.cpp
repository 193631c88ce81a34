#include "model/Messages.h"

namespace jk {

const char* builtInMessage(Msg m)
{
    switch (m) {
    case Msg::PrintDiscOffPaper: return "The disc label lies partly outside the paper with this stock:";
    case Msg::PrinterUnavailable: return "This printer is not available:";
    case Msg::PrintPictureMissing: return "A picture cannot be read and is left out of the print:";
    case Msg::PrintJobFailed: return "The print job could not be sent:";
    case Msg::PrintPdfNotWritten: return "The PDF file cannot be written:";
    case Msg::NoDiscStock: return "No disc-label stock can be read from CDRTYPE.TXT.";
    case Msg::PrintingPage: return "Printing page %1 of %2";
    case Msg::DiscStockSkipped: return "A record of the disc-label stock list was skipped:";
    case Msg::NoPrinter: return "No printer is installed.";
    case Msg::PrintNothing: return "The chosen sheets print nothing together.";
    case Msg::DiscImageEntry: return "Disc image...";
    case Msg::AudioCdRetry:
        return "The audio CD could not be read. Insert the disc and press Retry, or press Cancel to leave the text "
               "as it is.";
    case Msg::TitlesNotStored: return "The track titles were not stored.";
    // Print dialogs and preview.
    case Msg::PrintPreviewMenu: return "Print pre&view";
    case Msg::PrintPreviewTitle: return "Print preview";
    case Msg::PrintPreviewPopup: return "Preview";
    case Msg::FilterStocks: return "Filter by name, paper or maker";
    case Msg::TestPrintOutline: return "&Test print";
    case Msg::TooManyCopies: return "Enter a number of copies from 1 to %1.";
    case Msg::PrintingTitle: return "Printing";
    case Msg::PrinterNotAccepting: return "This printer does not take jobs now:";
    // Export.
    case Msg::ExportResolution: return "Export resolution (dpi)";
    case Msg::ExportNotWritten: return "The file cannot be written:";
    case Msg::GhostscriptMissing: return "Ghostscript (gs) is not installed, so EPS files cannot be written.";
    case Msg::GhostscriptFailed: return "Ghostscript could not turn the sheet into EPS:";
    case Msg::ExportReplace: return "These files exist already. Replace them?";
    case Msg::ExportTookTooLong: return "Ghostscript took too long and was stopped.";
    // Printer calibration.
    case Msg::CalibrateCommand: return "Calibrate &printer...";
    case Msg::CalibrationTitle: return "Printer calibration";
    case Msg::CalibrationPageHelp:
        return "Measure with a ruler how far the centre of cross A lies from the left and the top edge of the paper, "
               "and how long each ruler is from 0 to 150, then enter these in Tools > Calibrate printer. "
               "A lies %1 mm from the paper's left and top edges, B %2 mm from the corner of the printable area, "
               "C %3 mm from the paper's right and bottom edges.";
    case Msg::CalibrationValues: return "calibration: offset %1 / %2 mm, scale %3 / %4 %";
    case Msg::CalibrationMeasured: return "Measured on the calibration page (mm)";
    case Msg::MeasureCrossLeft: return "Cross A from the left edge";
    case Msg::MeasureCrossTop: return "Cross A from the top edge";
    case Msg::MeasureRulerAcross: return "Horizontal ruler, 0 to 150";
    case Msg::MeasureRulerDown: return "Vertical ruler, 0 to 150";
    case Msg::CalibrationCompute: return "&Compute";
    case Msg::CalibrationOffset: return "Offset across, down (mm)";
    case Msg::CalibrationScale: return "Scale across, down (%)";
    case Msg::CalibrationPrintPage: return "&Print calibration page";
    case Msg::CalibrationNotANumber: return "Enter what you measured, in millimetres:";
    case Msg::CalibrationOutOfRange:
        return "A calibration stays within 20 mm of offset and a scale of 90 to 110 %; measure again. This would be:";
    case Msg::CalibrationReset: return "&Reset";
    case Msg::TestOutlineNote:
        return "Test outline for %1: hold this page over a sheet of labels against the light; the circles must lie on "
               "the label.";
    case Msg::CalibrationPaperTooSmall: return "The calibration page needs paper of at least 200 x 250 mm, not";
    // Scanning.
    case Msg::ScanTitle: return "Scan";
    case Msg::ScanDeviceLabel: return "S&canner:";
    case Msg::ScanModeLabel: return "&Mode:";
    case Msg::ScanResolutionLabel: return "&Resolution:";
    case Msg::ScanPreviewButton: return "&Preview";
    case Msg::ScanButton: return "&Scan";
    case Msg::ScanAreaHint: return "Drag over the preview to choose the area to scan.";
    case Msg::NoScanner: return "No scanner was found. Connect the scanner, switch it on and try again.";
    case Msg::ScannerBusy: return "The scanner is in use by another program. Close that program and try again.";
    case Msg::ScannerGone: return "The scanner stopped answering. Check its cable and power, then try again.";
    case Msg::ScanFailed: return "The scanner could not scan:";
    case Msg::ScanTooLarge: return "The picture would be too large. Choose a lower resolution or a smaller area.";
    case Msg::ScanNotSaved: return "The scanned picture could not be saved:";
    case Msg::ScanSourcePrompt: return "The scanner to use:";
    // Companion programs.
    case Msg::CaptureNotSaved: return "The picture cannot be saved:";
    case Msg::CaptureFailed: return "The screen cannot be captured:";
    case Msg::CaptureCancelled: return "The screen capture was cancelled or refused by the desktop.";
    case Msg::CatalogueNoPictures: return "This folder holds no pictures to list:";
    case Msg::CataloguePictureSkipped: return "Left out, this picture cannot be read:";
    case Msg::FontSample: return "The quick brown fox jumps over the lazy dog. 0123456789";
    case Msg::FontCatalogueTitle: return "Fonts catalogue: %1 families";
    case Msg::PictureCatalogueTitle: return "Pictures catalogue: %1";
    case Msg::CataloguePage: return "Page %1 of %2";
    case Msg::CatalogueNotFolder: return "This folder cannot be read:";
    default: return "";
    }
}

}  // namespace jk
