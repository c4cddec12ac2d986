// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <QByteArray>
#include <QSize>
#include <QString>

class QPainter;

/// Drawings in an SVG file, for the tests.
namespace SvgDrawing
{

/// The file that holds what \p draw paints.
QByteArray drawn(const QSize &size, const std::function<void(QPainter *)> &draw);

/// Why \p svg is no good: not well-formed, or "nan" or "inf" in an attribute. Empty when it is
/// good.
QString fault(const QByteArray &svg);

/// The texts of \p svg in order, one a line.
QString texts(const QByteArray &svg);

} // namespace SvgDrawing
