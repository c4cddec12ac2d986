// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <QByteArray>
#include <QSize>
#include <QString>

class QPainter;

/// Drawings as SVG files, for the tests.
namespace SvgDrawing
{

/// A file with what \p draw paints.
QByteArray drawn(const QSize &size, const std::function<void(QPainter *)> &draw);

/// What is wrong with \p svg: not well-formed, or "nan" or "inf" in an attribute. Empty for
/// nothing.
QString fault(const QByteArray &svg);

/// The texts of \p svg in order, one per line.
QString texts(const QByteArray &svg);

} // namespace SvgDrawing
