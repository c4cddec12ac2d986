// SPDX-License-Identifier: GPL-3.0-or-later
// How long one repaint of each graph takes, by the number of patients.

#include <algorithm>
#include <cstdio>
#include <random>
#include <vector>

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>

#include "graphs/graphsubwindow.h"
#include "graphs/resultsubwindow.h"

namespace
{

constexpr int repaints = 7;
constexpr int measurements = 12;

QString identifier(int patient)
{
    return QStringLiteral("patient %1").arg(patient);
}

QVector<PatientScoreRecord> randomScores(int count, std::mt19937 *random)
{
    std::normal_distribution<double> convergence(0.0, 3.0);
    std::lognormal_distribution<double> variability(1.5, 0.5);
    QVector<PatientScoreRecord> scores;
    for (int i = 0; i < count; ++i) {
        scores.append({identifier(i), QVector<double>(methodCount, convergence(*random)),
                       QVector<double>(methodCount, variability(*random))});
    }
    return scores;
}

QVector<PatientRecord> randomPatients(int count, std::mt19937 *random)
{
    std::normal_distribution<double> value(60.0, 12.0);
    QVector<PatientRecord> patients;
    for (int i = 0; i < count; ++i) {
        PatientRecord patient;
        patient.id = identifier(i);
        for (int k = 0; k < measurements; ++k) {
            patient.values.append(value(*random));
        }
        patients.append(patient);
    }
    return patients;
}

// The median time of a repaint, in milliseconds.
double millisecondsOfRepaint(QWidget *window)
{
    window->resize(1200, 800);
    QImage image(window->size(), QImage::Format_ARGB32_Premultiplied);
    std::vector<double> times;
    for (int i = 0; i < repaints; ++i) {
        QElapsedTimer timer;
        timer.start();
        window->render(&image);
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times.at(times.size() / 2);
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    std::mt19937 random(1); // NOLINT: the same groups on every run
    std::printf("One repaint at 1200 x 800, median of %d, in ms; %d values per patient\n", repaints,
                measurements);
    std::printf("%10s %14s %14s\n", "patients", "result plot", "patient graph");
    for (const int count : {100, 1000, 10000}) {
        ResultSubWindow plot(randomScores(count, &random), 0, 0, 4.5, 0.0);
        GraphSubWindow graph(QString(), randomPatients(count, &random));
        std::printf("%10d %14.2f %14.2f\n", count, millisecondsOfRepaint(&plot),
                    millisecondsOfRepaint(&graph));
        std::fflush(stdout);
    }
    return 0;
}
