// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/linearsolvers.h"

#include <Eigen/QR>
#include <Eigen/SVD>

Eigen::VectorXd solveLeastSquares(const Eigen::MatrixXd &a, const Eigen::VectorXd &b)
{
    return Eigen::JacobiSVD<Eigen::MatrixXd>(a, Eigen::ComputeThinU | Eigen::ComputeThinV).solve(b);
}

Eigen::VectorXd solveSquare(const Eigen::MatrixXd &a, const Eigen::VectorXd &b)
{
    return Eigen::ColPivHouseholderQR<Eigen::MatrixXd>(a).solve(b);
}
