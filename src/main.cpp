// SPDX-License-Identifier: GPL-3.0-or-later
#include <clocale>

#include <QApplication>
#include <QTranslator>

#include "appearance.h"
#include "mainwindow.h"

int main(int argc, char *argv[])
{
    Appearance::scaleWithTheScreen();
    QApplication application(argc, argv);
    // The application takes the locale of the environment; the settings have a decimal point.
    std::setlocale(LC_NUMERIC, "C");
    Appearance::keepLightPalette();

    QTranslator translator;
    // Null strings ask for the defaults. An empty string that is not null would be taken literally.
    if (translator.load(QStringLiteral("czech_cs"), QString(), QString(), QString())) {
        QCoreApplication::installTranslator(&translator);
    }

    MainWindow window;
    window.show();
    return QApplication::exec();
}
