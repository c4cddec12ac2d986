// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <Eigen/Core>

// A pair of its own, since the decompositions take long to compile.

/// The x with the least sum of squares of \p a x - \p b, by a singular value decomposition of \p a.
/// As many rows in \p a as in \p b; where several x fit as well, the shortest of them.
Eigen::VectorXd solveLeastSquares(const Eigen::MatrixXd &a, const Eigen::VectorXd &b);

/// The x for which the square \p a x = \p b, by a QR decomposition of \p a with pivoting of its
/// columns. Where they depend on each other, the dropped ones have the coefficient 0.
Eigen::VectorXd solveSquare(const Eigen::MatrixXd &a, const Eigen::VectorXd &b);
