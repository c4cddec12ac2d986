// SPDX-License-Identifier: GPL-3.0-or-later
#include <QCoreApplication>
#include <QTest>
#include <QTranslator>

#include "openmessages.h"
#include "workbooks/patientreader.h"

namespace
{

LoadError damageIn(const char *part, const char *what, const QString &cell = {})
{
    LoadError error = LoadError(what).in(part);
    error.cell = cell;
    return error;
}

} // namespace

class TestOpenMessages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void damageNamesPartCellAndReason()
    {
        QCOMPARE(refusalText(damageIn("worksheet", "this is not a number", "C17")),
                 QString("This workbook is damaged (worksheet, cell C17: this is not a number). "
                         "Nothing was opened."));
        QCOMPARE(refusalText(damageIn("cell formats", "it is not well-formed XML")),
                 QString("This workbook is damaged (cell formats: it is not well-formed XML). "
                         "Nothing was opened."));
    }

    void otherReasonsNameNoPart()
    {
        LoadError error(LoadError::TooLarge);
        error.part = "worksheet";
        QCOMPARE(refusalText(error), QString("This workbook is too large. Nothing was opened."));
    }

    void fileThatCanBeOpenedHasNoReason()
    {
        QCOMPARE(whyNotOpened({{{"a", {50, 60}, PatientRecord::noIdealKvadrant}}, {}}), QString());
    }

    void errorComesBeforeThePatients()
    {
        QCOMPARE(whyNotOpened({{}, LoadError::TooLarge}),
                 QString("This workbook is too large. Nothing was opened."));
    }

    void damageIsToldInCzech()
    {
        QTranslator translator;
        QVERIFY(translator.load(CZECH_CATALOGUE));
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QCOMPARE(refusalText(damageIn("worksheet", "this is not a number", "C17")),
                 QString("Tento sešit je poškozený (list, buňka C17: toto není číslo). "
                         "Nic nebylo otevřeno."));
        QCOMPARE(refusalText(damageIn("shared texts", "it is missing")),
                 QString("Tento sešit je poškozený (sdílené texty: chybí). Nic nebylo otevřeno."));
    }
};

QTEST_GUILESS_MAIN(TestOpenMessages)
#include "tst_openmessages.moc"
