#include <clocale>

#include <QApplication>
#include <QTranslator>

#include "mainwindow.h"

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    // The toolkit has just taken over the user's locale, in which "2.9" may not be a number. The
    // settings file always has a point.
    std::setlocale(LC_NUMERIC, "C");

    QTranslator translator;
    // Null strings ask for the defaults. An empty string that is not null would be taken literally.
    translator.load(QStringLiteral("czech_cs"), QString(), QString(), QString());
    QCoreApplication::installTranslator(&translator);

    MainWindow window;
    window.show();
    return QApplication::exec();
}
