// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/expectedanalysis.h"

#include <QtNumeric>

using ExpectedSheets::Book;
using ExpectedSheets::Cells;
using ExpectedSheets::put;

namespace
{

// "$" is the place of the offset.
const QStringList pairLabels = {
    "Median difference + Standard Deviation",
    "Median difference + Difference standard Deviation + offset $",
    "Median difference + Interquartile range",
    "Simple linear regression + Standard Deviation",
    "Simple linear regression + Difference standard Deviation + offset $",
    "Simple linear regression + Interquartile range",
    "C*e^(k*x) + Standard Deviation",
    "C*e^(k*x) + Difference standard Deviation + offset $",
    "C*e^(k*x) + Interquartile range",
};

struct MethodSheet {
    const char *name;
    bool convergence;
    int reference;
    const char *referenceText;
    const char *thirdHeading;
    int thirdColumn;
    const char *fourthHeading;
    int fourthColumn;
};

const QVector<MethodSheet> methodSheets = {
    {"Covergence compare 1", true, 0, "Reference: Median difference", "Simple linear regression", 1,
     "C*e^(k*x)", 2},
    {"Covergence compare 2", true, 1, "Reference: Simple linear regression", "Median difference", 0,
     "C*e^(k*x)", 2},
    {"Covergence compare 3", true, 2, "Reference: C*e^(k*x)", "Median difference", 0,
     "Simple linear regression", 1},
    {"Variability compare 1", false, 0, "Reference: Standard deviation",
     "Difference standard deviation offset $", 1, "Interquartile range", 2},
    {"Variability compare 2", false, 1, "Reference: Difference standard deviation offset $",
     "Median difference", 0, "Interquartile range", 2},
    {"Variability compare 3", false, 2, "Reference: Interquartile range",
     "Difference standard deviation offset $", 0, "Standard deviation", 1},
};

QString withSkip(QString text, const QString &skipText)
{
    return text.replace('$', skipText);
}

int expectedKvadrant(const TestGroup &group, int patient, int pair)
{
    const double convergence = group.scores.at(patient).convergence.at(pair / 3);
    const double variability = group.scores.at(patient).variability.at(pair % 3);
    const double convergenceMedian = group.medianCenter.convergence.at(0);
    const double variabilityMedian = group.medianCenter.variability.at(0);
    if (qIsNaN(convergence) || qIsNaN(variability) || qIsNaN(convergenceMedian)
        || qIsNaN(variabilityMedian)) {
        return 0;
    }
    const QString mark = QString(convergence < convergenceMedian ? "B/" : "W/")
        + QString(variability < variabilityMedian ? "B" : "W");
    return int(QStringList({"W/W", "B/W", "B/B", "W/B"}).indexOf(mark)) + 1;
}

int expectedFlag(const TestGroup &group, int patient, bool convergence, int method)
{
    const auto list =
        convergence ? &PatientScoreRecord::convergence : &PatientScoreRecord::variability;
    const double value = (group.scores.at(patient).*list).at(method);
    const double median = (group.medianCenter.*list).at(method);
    if (qIsNaN(value) || qIsNaN(median)) {
        return 0;
    }
    return value < median ? 0 : 1;
}

class Expectation
{
public:
    Expectation(const TestGroup &group, QString skipText)
        : m_group(group), m_skip(std::move(skipText))
    {
        for (int patient = 0; patient < group.patients.size(); ++patient) {
            QVector<int> row;
            for (int pair = 0; pair < 9; ++pair) {
                row.append(expectedKvadrant(group, patient, pair));
            }
            m_kvadrants.append(row);
        }
    }

    Book book() const
    {
        Book book = {medianSheet()};
        for (int reference = 0; reference < 9; ++reference) {
            book.append(compareSheet(reference));
        }
        book.append(anovaMedianSheet());
        book.append(flagSheet());
        book.append({methodSheet(0), methodSheet(1), methodSheet(2)});
        book.append(methodAnovaSheet(
            "ConvAnova", true, {"Median difference", "Simple linear regression", "C*e^(k*x)"}));
        book.append({methodSheet(3), methodSheet(4), methodSheet(5)});
        book.append(
            methodAnovaSheet("VarAnova", false,
                             {"Standard deviation", "Difference standard deviation offset $",
                              "Interquartile range"}));
        book.append(idealSheet());
        return book;
    }

private:
    int kvadrant(int patient, int pair) const { return m_kvadrants.at(patient).at(pair); }

    int count() const { return int(m_group.patients.size()); }

    void label(Cells &cells, int row, int column, const QString &text) const
    {
        put(cells, row, column, withSkip(text, m_skip));
    }

    void identifiers(Cells &cells, int firstRow, int column) const
    {
        for (int patient = 0; patient < count(); ++patient) {
            put(cells, firstRow + patient, column, m_group.patients.at(patient).id);
        }
    }

    ExpectedSheets::Sheet medianSheet() const
    {
        Cells cells;
        label(cells, 1, 1, "Patient ID");
        identifiers(cells, 2, 1);
        for (int pair = 0; pair < 9; ++pair) {
            label(cells, 1, pair + 2, pairLabels.at(pair));
            for (int patient = 0; patient < count(); ++patient) {
                if (kvadrant(patient, pair) > 0) {
                    put(cells, patient + 2, pair + 2, kvadrant(patient, pair));
                }
            }
        }
        label(cells, 5, 12, "Information");
        label(cells, 6, 12, "Numbers in columns 2 and higher = kvadrants");
        return {"Median", cells, {}};
    }

    ExpectedSheets::Sheet compareSheet(int reference) const
    {
        Cells cells;
        label(cells, 1, 1, "Patient ID/Methods");
        label(cells, 1, 2, "Reference: " + pairLabels.at(reference));
        label(cells, 1, 11, "% same as reference");
        identifiers(cells, 2, 1);
        QVector<int> same(count(), 0);
        for (int c = 0; c < 8; ++c) {
            const int pair = c < reference ? c : c + 1;
            if (pair == 5) {
                label(cells, 1, c + 3, "Simple linear regression+ Interquartile range");
            } else {
                label(cells, 1, c + 3, pairLabels.at(pair));
            }
            for (int patient = 0; patient < count(); ++patient) {
                const bool agrees = kvadrant(patient, pair) == kvadrant(patient, reference);
                put(cells, patient + 2, c + 3, agrees ? 1 : 0);
                same[patient] += agrees ? 1 : 0;
            }
        }
        for (int patient = 0; patient < count(); ++patient) {
            put(cells, patient + 2, 2, kvadrant(patient, reference));
            put(cells, patient + 2, 11, same.at(patient) * 0.125);
        }
        label(cells, 5, 13, "Information");
        label(cells, 6, 13, "First column: Patient ID");
        label(cells, 7, 13, "Second column: Reference value");
        label(cells, 7, 14, "Number in second column = kvadrants");
        label(cells, 8, 13, "Rest columns except last = compared to reference");
        label(cells, 8, 14, "1 - same, 0 - different");
        return {QString("Compare %1").arg(reference + 1), cells, {}};
    }

    ExpectedSheets::Sheet anovaMedianSheet() const
    {
        Cells cells;
        for (int t = 0; t < 72; ++t) {
            const int left = t / 8;
            const int right = t % 8 < left ? t % 8 : t % 8 + 1;
            label(cells, 1, 2 + 3 * t, pairLabels.at(left));
            label(cells, 1, 3 + 3 * t, pairLabels.at(right));
            for (int patient = 0; patient < count(); ++patient) {
                put(cells, patient + 2, 2 + 3 * t, kvadrant(patient, left));
                put(cells, patient + 2, 3 + 3 * t, kvadrant(patient, right));
            }
        }
        return {"AnovaMedian", cells, {}};
    }

    ExpectedSheets::Sheet flagSheet() const
    {
        Cells cells;
        label(cells, 1, 1, "Convergence");
        label(cells, 1, 6, "Variability");
        label(cells, 2, 1, "Patient ID");
        label(cells, 2, 2, "Median difference");
        label(cells, 2, 3, "Simple linear regression");
        label(cells, 2, 4, "C*e^(k*x)");
        label(cells, 2, 6, "Patient ID");
        label(cells, 2, 7, "Standard deviation");
        label(cells, 2, 8, "Difference standard deviation offset $");
        label(cells, 2, 9, "Interquartile range");
        identifiers(cells, 3, 1);
        identifiers(cells, 3, 6);
        for (int patient = 0; patient < count(); ++patient) {
            for (int method = 0; method < 3; ++method) {
                put(cells, patient + 3, method + 2, expectedFlag(m_group, patient, true, method));
                put(cells, patient + 3, method + 7, expectedFlag(m_group, patient, false, method));
            }
        }
        label(cells, 5, 11, "Information");
        label(cells, 6, 11, "1 - worse than median, 0 better than median");
        return {"Convergence&Variability", cells, {}};
    }

    ExpectedSheets::Sheet methodSheet(int index) const
    {
        const MethodSheet &sheet = methodSheets.at(index);
        Cells cells;
        label(cells, 1, 1, "Patient ID");
        label(cells, 1, 2, sheet.referenceText);
        label(cells, 1, 3, sheet.thirdHeading);
        label(cells, 1, 4, sheet.fourthHeading);
        label(cells, 1, 5, "% same as reference");
        identifiers(cells, 2, 1);
        for (int patient = 0; patient < count(); ++patient) {
            const int reference =
                expectedFlag(m_group, patient, sheet.convergence, sheet.reference);
            const bool third =
                expectedFlag(m_group, patient, sheet.convergence, sheet.thirdColumn) == reference;
            const bool fourth =
                expectedFlag(m_group, patient, sheet.convergence, sheet.fourthColumn) == reference;
            put(cells, patient + 2, 2, reference);
            put(cells, patient + 2, 3, third ? 1 : 0);
            put(cells, patient + 2, 4, fourth ? 1 : 0);
            put(cells, patient + 2, 5, (third ? 0.5 : 0.0) + (fourth ? 0.5 : 0.0));
        }
        label(cells, 5, 7, "Information");
        label(cells, 6, 7, "First column: Patient ID");
        label(cells, 7, 7, "Second column: Reference value");
        label(cells, 7, 8, "1 - worse than median or equal, 0 - better than median");
        label(cells, 8, 7, "3, 4 column: Compared to second column");
        label(cells, 8, 8, "1 - same, 0 - different");
        return {sheet.name, cells, {}};
    }

    ExpectedSheets::Sheet methodAnovaSheet(const QString &name, bool convergence,
                                           const QVector<const char *> &labels) const
    {
        const QVector<QPair<int, int>> pairs = {{0, 1}, {0, 2}, {1, 0}, {1, 2}, {2, 0}, {2, 1}};
        Cells cells;
        for (int t = 0; t < 6; ++t) {
            const int left = pairs.at(t).first;
            const int right = pairs.at(t).second;
            label(cells, 1, 1 + 3 * t, labels.at(left));
            label(cells, 1, 2 + 3 * t, labels.at(right));
            for (int patient = 0; patient < count(); ++patient) {
                put(cells, patient + 2, 1 + 3 * t,
                    expectedFlag(m_group, patient, convergence, left));
                put(cells, patient + 2, 2 + 3 * t,
                    expectedFlag(m_group, patient, convergence, right));
            }
        }
        return {name, cells, {}};
    }

    ExpectedSheets::Sheet idealSheet() const
    {
        Cells cells;
        label(cells, 1, 1, "Patient ID");
        label(cells, 1, 2, "Ideal kvadrant");
        label(cells, 1, 11, "% same as reference");
        for (int pair = 0; pair < 8; ++pair) {
            label(cells, 1, pair + 3, pairLabels.at(pair));
        }
        identifiers(cells, 2, 1);
        for (int patient = 0; patient < count(); ++patient) {
            const int ideal = m_group.patients.at(patient).idealKvadrant;
            put(cells, patient + 2, 2, ideal);
            double hits = 0;
            for (int pair = 0; pair < 9; ++pair) {
                const bool hit = ideal != -1 && kvadrant(patient, pair) == ideal;
                hits += hit ? 1 : 0;
                if (pair < 8) {
                    put(cells, patient + 2, pair + 3, hit ? 1 : 0);
                }
            }
            put(cells, patient + 2, 11, hits / 9.0);
        }
        return {"IdealCompare", cells, {}};
    }

    const TestGroup &m_group;
    QString m_skip;
    QVector<QVector<int>> m_kvadrants;
};

} // namespace

namespace ExpectedAnalysis
{

Book book(const TestGroup &group, const QString &skipText)
{
    return Expectation(group, skipText).book();
}

int kvadrant(const TestGroup &group, int patient, int pair)
{
    return expectedKvadrant(group, patient, pair);
}

QString pairLabel(int pair, const QString &skipText)
{
    return withSkip(pairLabels.at(pair), skipText);
}

} // namespace ExpectedAnalysis
