// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <Eigen/Core>

// Apart from their callers, because the decompositions take long to compile.

// Eigen adds two numbers at a time with the instructions that every 64-bit PC and ARM processor
// has. With others, such as AVX, it adds in another order and gives other last bits.
static_assert(Eigen::internal::packet_traits<double>::size == 2,
              "-march, -mavx and EIGEN_DONT_VECTORIZE change the last bits of the results");

/// The x with the least sum of squares of \p a x - \p b, by a singular value decomposition of \p a.
/// \p a and \p b have the same number of rows. Of several x that fit equally well, the shortest.
Eigen::VectorXd solveLeastSquares(const Eigen::MatrixXd &a, const Eigen::VectorXd &b);

/// The x for which the square \p a x = \p b, by a QR decomposition of \p a with pivoting of its
/// columns. Where columns depend on each other, those that are dropped have the coefficient 0.
Eigen::VectorXd solveSquare(const Eigen::MatrixXd &a, const Eigen::VectorXd &b);
