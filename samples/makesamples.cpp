// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the two sample workbooks: invented patients, the same at every run.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>

#include <QDir>
#include <QString>
#include <QVector>
#include <xlsxdocument.h>

namespace
{

struct Course {
    double start; // mmol/mol
    double target; // mmol/mol, approached measurement by measurement
    double speed; // share of the remaining distance that one measurement covers
    double noise; // mmol/mol
    int measurements;
};

// The distributions of the standard library differ between its implementations; the generator
// itself does not.
class Chance
{
public:
    double between(double low, double high)
    {
        return low + (high - low) * (double(generator()) / 4294967296.0);
    }
    int whole(int low, int high) { return int(between(low, high + 1)); }
    // The sum of twelve is near enough to a normal distribution of width 1.
    double normal()
    {
        double sum = -6.0;
        for (int i = 0; i < 12; ++i) {
            sum += between(0.0, 1.0);
        }
        return sum;
    }

private:
    std::mt19937 generator{20};
};

Course randomCourse(Chance &chance)
{
    const bool newlyTreated = chance.between(0.0, 1.0) < 0.55;
    const double start = newlyTreated ? chance.between(68.0, 112.0) : chance.between(42.0, 75.0);
    const double target = newlyTreated ? chance.between(44.0, 66.0) : start + 12 * chance.normal();
    return {start, target, chance.between(0.08, 0.45), chance.between(1.0, 6.5),
            chance.whole(5, 24)};
}

QVector<double> series(const Course &course, Chance &chance)
{
    QVector<double> values;
    double level = course.start;
    for (int i = 0; i < course.measurements; ++i) {
        // Laboratories report whole numbers.
        const double value = std::round(level + course.noise * chance.normal());
        values.append(std::clamp(value, 30.0, 120.0));
        level += (course.target - level) * course.speed;
    }
    return values;
}

// A study code is \p letter and a number of \p digits.
bool save(const QString &path, QChar letter, int digits, int patients, int mostMeasurements,
          Chance &chance)
{
    QXlsx::Document document;
    document.write(1, 1, QStringLiteral("Patient"));
    for (int i = 1; i <= mostMeasurements; ++i) {
        document.write(1, i + 1, QStringLiteral("Value %1").arg(i));
    }
    for (int patient = 0; patient < patients; ++patient) {
        const int row = patient + 2;
        document.write(
            row, 1, letter + QStringLiteral("%1").arg(patient + 1, digits, 10, QLatin1Char('0')));
        Course course = randomCourse(chance);
        course.measurements = std::min(course.measurements, mostMeasurements);
        const QVector<double> values = series(course, chance);
        for (int i = 0; i < values.size(); ++i) {
            document.write(row, i + 2, values.at(i));
        }
    }
    return document.saveAs(path);
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fputs("usage: makesamples FOLDER\n", stderr);
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    Chance chance;
    const auto sample = folder.filePath(QStringLiteral("glymark-sample.xlsx"));
    const auto small = folder.filePath(QStringLiteral("glymark-small.xlsx"));
    // Different codes, so that no patient of one is mistaken for a patient of the other.
    const bool saved = save(sample, QLatin1Char('P'), 3, 40, 24, chance)
        && save(small, QLatin1Char('T'), 1, 6, 8, chance);
    if (!saved) {
        std::fputs("makesamples: cannot write there\n", stderr);
        return 1;
    }
    return 0;
}
