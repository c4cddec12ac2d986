// SPDX-License-Identifier: GPL-3.0-or-later
#include "appearance.h"

#include <memory>

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>

namespace
{

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Base).lightness() < palette.color(QPalette::Text).lightness();
}

QPalette lightPalette()
{
    QPalette palette = QApplication::style()->standardPalette();
    if (!isDark(palette)) {
        return palette;
    }
    // A style that is dark itself. This one comes with the toolkit.
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
    return fusion->standardPalette();
}

void takeLightPalette()
{
    if (isDark(QApplication::palette())) {
        QApplication::setPalette(lightPalette());
    }
}

} // namespace

void Appearance::prepare()
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}

void Appearance::settle()
{
    takeLightPalette();
    QObject::connect(qApp, &QGuiApplication::paletteChanged, qApp, &takeLightPalette);
}
