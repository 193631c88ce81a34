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
    // Export.
    // Printer calibration.
    // Scanning.
    // Companion programs.
    default: return "";
    }
}

}  // namespace jk
