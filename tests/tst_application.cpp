// SPDX-License-Identifier: GPL-3.0-or-later
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "support/commalocale.h"

/// The program itself, as a process of its own.
class TestApplication : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void settingsReadTheSameUnderACommaLocale()
    {
        const QTemporaryDir folder;
        const QString locales = folder.filePath("locales");
        if (!makeCommaLocale(locales)) {
            QSKIP("this system cannot make a Czech locale");
        }

        // 3.5 is too large and gets corrected; read with a decimal comma it would be no number at
        // all, which stays as it is.
        QFile config(folder.filePath("config.ini"));
        QVERIFY(config.open(QFile::WriteOnly));
        config.write("[Method]\nConvergence = 3.5\n");
        config.close();

        QProcess program;
        program.setWorkingDirectory(folder.path());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("LOCPATH", locales);
        environment.insert("LC_ALL", commaLocale);
        program.setProcessEnvironment(environment);
        program.start(GLYMARK_PROGRAM, QStringList());
        QVERIFY(program.waitForStarted());
        const auto content = [&config] {
            const bool open = config.open(QFile::ReadOnly);
            QByteArray all = open ? config.readAll() : QByteArray();
            config.close();
            return all;
        };
        const QByteArray expected = "[Method]\nConvergence = 0\n";
        QVERIFY(QTest::qWaitFor([&] { return content() == expected; }, 20000));
        program.kill();
        program.waitForFinished();
    }
};

QTEST_GUILESS_MAIN(TestApplication)
#include "tst_application.moc"
