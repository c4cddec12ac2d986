// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QTranslator>

#include "appearance.h"
#include "mainwindow.h"

int main(int argc, char *argv[])
{
    Appearance::prepare();
    QApplication application(argc, argv);
    Appearance::settle();

    QTranslator translator;
    // Null strings ask for the defaults. An empty string that is not null would be taken literally.
    if (translator.load(QStringLiteral("czech_cs"), QString(), QString(), QString())) {
        QCoreApplication::installTranslator(&translator);
    }

    MainWindow window;
    window.show();
    return QApplication::exec();
}
