// SPDX-License-Identifier: GPL-3.0-or-later
#include <array>
#include <cmath>
#include <memory>

#include <QApplication>
#include <QInputDialog>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QProcess>
#include <QProxyStyle>
#include <QPushButton>
#include <QStyle>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include "appearance.h"
#include "support/mainwindowtester.h"

namespace
{

/// What the program reports about its texts on a screen of \p dpi dots per inch.
QStringList reportAt(int dpi)
{
    const QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_FONT_DPI", QString::number(dpi));
    environment.insert("GLYMARK_WORKBOOK", SAMPLE);
    environment.insert("XDG_RUNTIME_DIR", folder.path());
    QProcess program;
    program.setProcessEnvironment(environment);
    program.setWorkingDirectory(folder.path());
    program.start(APPEARANCE_REPORT, QStringList());
    if (!program.waitForFinished(60000)) {
        program.kill();
        program.waitForFinished();
    }
    return QString::fromUtf8(program.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
}

/// The texts that have too little room according to \p report.
QStringList cutTexts(const QStringList &report)
{
    return report.filter(QRegularExpression("^cut "));
}

/// Text and width of a line "text Median difference 102".
std::pair<QString, double> textAndWidth(const QString &line)
{
    return {line.section(' ', 0, -2), line.section(' ', -1).toDouble()};
}

QPalette darkPalette()
{
    QPalette palette(QColor(45, 45, 45), QColor(30, 30, 30));
    palette.setColor(QPalette::Highlight, QColor(40, 90, 160));
    return palette;
}

/// Relative luminance, 0 to 1, by the contrast rules for web pages.
double luminance(const QColor &color)
{
    const auto linear = [](double channel) {
        return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
        + 0.0722 * linear(color.blueF());
}

double contrast(const QColor &text, const QColor &ground)
{
    const auto [darker, lighter] = std::minmax({luminance(text), luminance(ground)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// A picture of everything there is to see.
QVector<QImage> pictures()
{
    MainWindowTester tester;
    tester.start();
    tester.window->resize(1240, 900);
    tester.openThreePatients();
    tester.patientTable()->selectAll();
    tester.answers.expectAndAccept<QInputDialog>();
    tester.button("Show graph")->click();
    QVector<QImage> all = {tester.window->grab().toImage()};
    auto *tabs = tester.window->findChild<QTabWidget *>();
    tabs->setCurrentIndex(1);
    all << tester.window->grab().toImage();
    tester.answers.expect<QDialog>([&all](QDialog &dialog) {
        // Without the cursor, which blinks.
        dialog.setFocus();
        all << dialog.grab().toImage();
        dialog.reject();
    });
    tester.trigger("Settings");
    tester.trigger("Close file");
    tester.answers.expect<QMessageBox>([&all](QMessageBox &box) {
        all << box.grab().toImage();
        box.accept();
    });
    tester.trigger("Groups graph");
    return all;
}

/// A style that is dark itself.
class DarkStyle : public QProxyStyle
{
public:
    QPalette standardPalette() const override { return darkPalette(); }
};

} // namespace

class TestAppearance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        QApplication::setStyle("Fusion");
        QApplication::setPalette(QApplication::style()->standardPalette());
    }
    void cleanup()
    {
        const std::unique_ptr<QObject> keeper(qApp->findChild<QObject *>("lightPaletteKeeper"));
    }

    void noTextIsCutThatIsWholeAt96_data()
    {
        QTest::addColumn<int>("dpi");
        for (const int dpi : {120, 144, 192}) {
            QTest::addRow("%d", dpi) << dpi;
        }
    }
    void noTextIsCutThatIsWholeAt96()
    {
        QFETCH(const int, dpi);
        const QStringList usual = reportAt(96);
        const QStringList report = reportAt(dpi);
        QCOMPARE(usual.filter("problem"), QStringList());
        QCOMPARE(report.filter("problem"), QStringList());
        QVERIFY(usual.contains("ratio 1"));
        QVERIFY(report.contains(QString("ratio %1").arg(dpi / 96.0)));
        QCOMPARE(cutTexts(report), cutTexts(usual));
        // Texts of the message, the window, both graphs and both dialogs.
        QVERIFY(usual.size() > 100);
        QCOMPARE(report.size(), usual.size());
        for (int i = 0; i < usual.size(); ++i) {
            if (usual.at(i).startsWith("text ")) {
                const auto [text, width] = textAndWidth(usual.at(i));
                const auto [scaledText, scaledWidth] = textAndWidth(report.at(i));
                QCOMPARE(scaledText, text);
                QVERIFY2(std::abs(scaledWidth - width) <= 2 + width * 0.03, qPrintable(text));
            }
        }
    }

    void darkDesktopLooksLikeALightOne()
    {
        const QVector<QImage> light = pictures();
        QApplication::setPalette(darkPalette());
        const QVector<QImage> dark = pictures();
        QCOMPARE(dark.size(), 4);
        for (int i = 0; i < dark.size(); ++i) {
            QVERIFY2(dark.at(i) != light.at(i), "the palette does not reach the window");
        }
        Appearance::keepLightPalette();
        const QVector<QImage> kept = pictures();
        for (int i = 0; i < kept.size(); ++i) {
            QCOMPARE(kept.at(i), light.at(i));
        }
    }

    void desktopMayTurnDarkLater()
    {
        Appearance::keepLightPalette();
        QApplication::setPalette(darkPalette());
        QCoreApplication::processEvents();
        QCOMPARE(QApplication::palette().color(QPalette::Base),
                 QApplication::style()->standardPalette().color(QPalette::Base));
    }

    void lightPaletteIsThatOfTheStyle()
    {
        const QColor fusion = QApplication::palette().color(QPalette::Window);
        QStyle *const style = QApplication::setStyle("Windows");
        QVERIFY(style->standardPalette().color(QPalette::Window) != fusion);
        QApplication::setPalette(darkPalette());
        Appearance::keepLightPalette();
        QCOMPARE(QApplication::palette().color(QPalette::Window),
                 style->standardPalette().color(QPalette::Window));
    }

    void darkStyleGetsALightPalette()
    {
        const QPalette fusion = QApplication::palette();
        QApplication::setStyle(new DarkStyle);
        QApplication::setPalette(darkPalette());
        Appearance::keepLightPalette();
        for (const auto role : {QPalette::Window, QPalette::Base, QPalette::Text}) {
            QCOMPARE(QApplication::palette().color(role), fusion.color(role));
        }
    }

    void lightDesktopKeepsItsPalette()
    {
        QPalette palette = QApplication::palette();
        palette.setColor(QPalette::Window, QColor(250, 240, 220));
        palette.setColor(QPalette::Highlight, QColor(180, 40, 90));
        QApplication::setPalette(palette);
        Appearance::keepLightPalette();
        QCOMPARE(QApplication::palette().color(QPalette::Window), QColor(250, 240, 220));
        QCOMPARE(QApplication::palette().color(QPalette::Highlight), QColor(180, 40, 90));
    }

    void everyTextHasContrast()
    {
        QApplication::setPalette(darkPalette());
        Appearance::keepLightPalette();
        const QPalette palette = QApplication::palette();
        for (const auto &[text, ground] :
             {std::pair(QPalette::WindowText, QPalette::Window),
              std::pair(QPalette::Text, QPalette::Base),
              std::pair(QPalette::Text, QPalette::AlternateBase),
              std::pair(QPalette::ButtonText, QPalette::Button),
              std::pair(QPalette::HighlightedText, QPalette::Highlight)}) {
            // Less only if the style's own light palette has less.
            const QPalette style = QApplication::style()->standardPalette();
            const double usual = contrast(style.color(text), style.color(ground));
            QVERIFY2(contrast(palette.color(text), palette.color(ground)) >= qMin(4.5, usual),
                     qPrintable(QString("%1 on %2").arg(text).arg(ground)));
        }
        // The cells of the score table, and the black of the graphs on the window.
        for (const char *ground : {"#E79292", "#AAD083", "#647B98"}) {
            QVERIFY2(contrast(palette.color(QPalette::Text), QColor(ground)) >= 4.5, ground);
        }
        QVERIFY(contrast(Qt::black, palette.color(QPalette::Window)) >= 4.5);
    }
};

QTEST_MAIN(TestAppearance)
#include "tst_appearance.moc"
