// SPDX-License-Identifier: GPL-3.0-or-later
#include <utility>

#include <QCoreApplication>
#include <QSet>
#include <QTest>
#include <QTranslator>

#include "openmessages.h"
#include "workbooks/patientreader.h"

namespace
{

using Part = LoadError::Part;
using Damage = LoadError::Damage;

LoadError damageIn(Part part, Damage damage, const QString &cell = {})
{
    LoadError error(damage);
    error.part = part;
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
        QCOMPARE(refusalText(damageIn(Part::Worksheet, Damage::Number, "C17")),
                 QString("This workbook is damaged (worksheet, cell C17: this is not a number). "
                         "Nothing was opened."));
        QCOMPARE(refusalText(damageIn(Part::CellFormats, Damage::Xml)),
                 QString("This workbook is damaged (cell formats: it is not well-formed XML). "
                         "Nothing was opened."));
    }

    void otherReasonsNameNoPart()
    {
        LoadError error(LoadError::TooLarge);
        error.part = Part::Worksheet;
        QCOMPARE(refusalText(error), QString("This workbook is too large. Nothing was opened."));
    }

    void eachPartAndEachDamageHasWordsOfItsOwn()
    {
        QSet<QString> texts;
        constexpr int parts = static_cast<int>(Part::Worksheet) + 1;
        constexpr int damages = static_cast<int>(Damage::TextIndex);
        for (int part = 0; part < parts; ++part) {
            for (int damage = 1; damage <= damages; ++damage) {
                texts.insert(
                    refusalText(damageIn(static_cast<Part>(part), static_cast<Damage>(damage))));
            }
        }
        QCOMPARE(texts.size(), parts * damages);
        for (const QString &text : std::as_const(texts)) {
            QVERIFY2(!text.contains("(:") && !text.contains(": )"), qPrintable(text));
        }
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
        QCOMPARE(refusalText(damageIn(Part::Worksheet, Damage::Number, "C17")),
                 QString("Tento sešit je poškozený (list, buňka C17: toto není číslo). "
                         "Nic nebylo otevřeno."));
        QCOMPARE(refusalText(damageIn(Part::SharedTexts, Damage::Missing)),
                 QString("Tento sešit je poškozený (sdílené texty: chybí). Nic nebylo otevřeno."));
    }
};

QTEST_GUILESS_MAIN(TestOpenMessages)
#include "tst_openmessages.moc"
