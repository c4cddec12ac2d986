// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/convergence.h"

#include <limits>

#include "analysis/linearsolvers.h"
#include "analysis/logarithm.h"
#include "analysis/median.h"
#include "analysis/patientrecord.h"

namespace
{

constexpr double undefined = std::numeric_limits<double>::quiet_NaN();

} // namespace

QVector<double> convergenceValues(const PatientRecord &patient)
{
    return {medianDifference(patient.values), linearLeastSquares(patient.values),
            exponentialFit(patient.values)};
}

double medianDifference(const QVector<double> &values)
{
    QVector<double> steps;
    steps.reserve(values.size());
    for (int i = 0; i + 1 < values.size(); ++i) {
        steps.append(values.at(i + 1) - values.at(i));
    }
    return median(std::move(steps));
}

double linearLeastSquares(const QVector<double> &values)
{
    if (values.size() < fewestValues) {
        return undefined;
    }
    Eigen::MatrixXd a(values.size(), 2);
    Eigen::VectorXd b(values.size());
    for (int i = 0; i < values.size(); ++i) {
        a(i, 0) = i;
        a(i, 1) = 1.0;
        b(i) = values.at(i);
    }
    return solveLeastSquares(a, b)(0);
}

double exponentialFit(const QVector<double> &values)
{
    if (values.size() < fewestValues) {
        return undefined;
    }
    double s0 = 0.0;
    double s1 = 0.0;
    double s2 = 0.0;
    double s3 = 0.0;
    double s4 = 0.0;
    for (int i = 0; i < values.size(); ++i) {
        const double x = i;
        const double y = values.at(i);
        if (y < 0.0) {
            return undefined; // no logarithm, also where the solver would drop k
        }
        const double p = x * y;
        const double logarithm = naturalLogarithm(y);
        s0 += y;
        s1 += p;
        s2 += (y * y) * x; // Required as is: not x * x * y.
        s3 += logarithm * y;
        s4 += logarithm * p;
    }
    Eigen::MatrixXd m(2, 2);
    m << s0, s1, s1, s2;
    Eigen::VectorXd r(2);
    r << s3, s4;
    return solveSquare(m, r)(1);
}
