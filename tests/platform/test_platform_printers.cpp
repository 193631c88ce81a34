// The real printers service against whatever CUPS the wrapper set up:
// none at all, or a private cupsd with two cups-pdf queues (see
// with_private_cupsd.sh).
#include "ui/widgets/RealServices.h"
#include <QDir>
#include <QElapsedTimer>
#include <QPrinterInfo>
#include <QProcess>
#include <QtTest>

class TestPrinters : public QObject {
    Q_OBJECT
    RealServices real;
    jk::platform::IPrinters* printers() { return real.services().printers; }
    static QByteArray setup() { return qgetenv("JK_PRINTER_SETUP"); }

private Q_SLOTS:
    void withoutAServerThereAreNoPrinters()
    {
        if (setup() != "none") QSKIP("needs CUPS_SERVER pointing at a missing socket");
        QElapsedTimer t;
        t.start();
        QVERIFY(printers()->printers().isEmpty());
        QVERIFY(printers()->defaultPrinter().isEmpty());
        QString error;
        QVERIFY(!printers()->setDefaultPrinter(QStringLiteral("TEST-PDF"), &error));
        QVERIFY(error.contains(QLatin1String("TEST-PDF")));
        QVERIFY2(t.elapsed() < 3000, qPrintable(QString::number(t.elapsed())));
    }

    void privateServerDefaultDestination()
    {
        if (setup() == "unavailable") QSKIP(qgetenv("JK_PRINTER_SKIP_REASON").constData());
        if (setup() != "cupsd") QSKIP("runs under with_private_cupsd.sh");

        const QStringList names = printers()->printers();
        QVERIFY2(names.contains(QLatin1String("TEST-PDF")) && names.contains(QLatin1String("TEST-PDF2")),
                 qPrintable(names.join(u',')));
        QCOMPARE(printers()->defaultPrinter(), QStringLiteral("TEST-PDF"));

        QString error;
        QVERIFY2(printers()->setDefaultPrinter(QStringLiteral("TEST-PDF2"), &error), qPrintable(error));
        QCOMPARE(QPrinterInfo::defaultPrinterName(), QStringLiteral("TEST-PDF2"));
        QCOMPARE(printers()->defaultPrinter(), QStringLiteral("TEST-PDF2"));

        // Saved for the user, as lpoptions -d would: another process sees it.
        QProcess lpstat;
        lpstat.start(QStringLiteral("lpstat"), {QStringLiteral("-d")});
        QVERIFY(lpstat.waitForFinished(10000));
        QVERIFY2(lpstat.readAllStandardOutput().contains("TEST-PDF2"), "lpstat -d");
        // In the user's own file, even for root: the system-wide one is untouched.
        QFile user(QDir::homePath() + QStringLiteral("/.cups/lpoptions"));
        QVERIFY(user.open(QIODevice::ReadOnly));
        QVERIFY(user.readAll().contains("Default TEST-PDF2"));
        QVERIFY(!QFile::exists(qEnvironmentVariable("CUPS_SERVERROOT") + QStringLiteral("/lpoptions")));

        // An unknown destination is refused and the default stays.
        error.clear();
        QVERIFY(!printers()->setDefaultPrinter(QStringLiteral("NO-SUCH-QUEUE"), &error));
        QVERIFY(error.contains(QLatin1String("NO-SUCH-QUEUE")));
        QCOMPARE(QPrinterInfo::defaultPrinterName(), QStringLiteral("TEST-PDF2"));

        QVERIFY(printers()->setDefaultPrinter(QStringLiteral("TEST-PDF"), &error));
        QCOMPARE(QPrinterInfo::defaultPrinterName(), QStringLiteral("TEST-PDF"));
    }
};

QTEST_MAIN(TestPrinters)
#include "test_platform_printers.moc"
