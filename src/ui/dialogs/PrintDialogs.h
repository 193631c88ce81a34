#pragma once
// The three small dialogs of a print run: the printer and copy count
// (Form1), the sheets to print (SELPFRM) and the disc-label stock
// (CDCHOOSE). Each takes and returns plain values; the main window runs
// the print.
#include "output/DiscStock.h"
#include <QDialog>
#include <QString>
#include <functional>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

struct PrinterChoice {
    int copies = 0;        // 0: cancelled, nothing printed
    QString printer;       // the printer the run goes to
    QString savedPrinter;  // the current printer when the dialog opened: quitting restores it
};

// Form1: the installed printers (choosing one makes it the current printer
// at once, through onPrinterChosen) and the number of copies.
class PrinterDialog : public QDialog {
    Q_OBJECT
public:
    static PrinterChoice run(QWidget* parent, const std::function<void(const QString&)>& onPrinterChosen);

private:
    PrinterDialog(QWidget* parent, const std::function<void(const QString&)>& onPrinterChosen);
    void acceptCopies();

    QComboBox* printers_ = nullptr;
    QLineEdit* copiesBox_ = nullptr;
    int copies_ = 0;
};

// SELPFRM: which of the project's sheets print. The boxes are set once,
// when the dialog opens. Returns the sum of the ticked print weights; 0
// when the dialog was closed by its frame.
class SheetSelectionDialog : public QDialog {
    Q_OBJECT
public:
    static int run(QWidget* parent, int projectWeights);

private:
    SheetSelectionDialog(QWidget* parent, int projectWeights);
    int checkedWeights() const;

    std::vector<std::pair<QCheckBox*, int>> boxes_;  // box and its print weight
    QPushButton* ok_ = nullptr;
};

struct DiscStockChoice {
    enum Answer { Closed = 0, Ok = 1, Cancelled = 2 } answer = Closed;
    jk::print::DiscStock stock;  // the last selected entry (also after Cancel)
    bool keepBackground = false;
};

// CDCHOOSE: the label stock a disc label prints on, with a filter over the
// list, the stock's description, "Keep background" and a test print of the
// disc's outline (when testPrint is given).
class DiscStockDialog : public QDialog {
    Q_OBJECT
public:
    static DiscStockChoice run(QWidget* parent, const std::vector<jk::print::DiscStock>& stocks,
                               const QString& preselect,
                               const std::function<void(const jk::print::DiscStock&)>& testPrint = {});

private:
    DiscStockDialog(QWidget* parent, const std::vector<jk::print::DiscStock>& stocks, const QString& preselect,
                    const std::function<void(const jk::print::DiscStock&)>& testPrint);
    void filter(const QString& text);
    void selectRow(int row);

    const std::vector<jk::print::DiscStock>& stocks_;
    QLineEdit* filter_ = nullptr;
    QListWidget* list_ = nullptr;
    QLabel* description_ = nullptr;
    QCheckBox* keep_ = nullptr;
    DiscStockChoice choice_;
};
