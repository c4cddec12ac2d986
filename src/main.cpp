#include <clocale>

#include <QApplication>
#include <QTranslator>

#include "mainwindow.h"

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    // The toolkit has just taken the user's locale; "2.9" in the settings file is no matter of
    // taste.
    std::setlocale(LC_NUMERIC, "C");

    QTranslator translator;
    // What is left out must be null: an empty directory or suffix that is not null is looked for.
    translator.load(QStringLiteral("czech_cs"), QString(), QString(), QString());
    QCoreApplication::installTranslator(&translator);

    MainWindow window;
    window.show();
    return QApplication::exec();
}
