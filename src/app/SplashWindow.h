#pragma once
// The start-up window: loads every text of the message file and refreshes
// the printer-font cache while the user waits.
#include <QWidget>

class QLabel;
class QListWidget;

class SplashWindow : public QWidget {
    Q_OBJECT
public:
    explicit SplashWindow(QWidget* parent = nullptr);
    // Runs the load steps; returns whether the font cache was rewritten.
    bool loadTexts();
    QString status() const;

    // The printer fonts, in the order they are cached.
    static QStringList printerFonts();

private:
    void setStatus(const QString& text);
    QLabel* loadFont_;
    QListWidget* list1_;
};
