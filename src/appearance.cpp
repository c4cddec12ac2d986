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
    // The style itself is dark. Fusion comes with the toolkit.
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
    return fusion->standardPalette();
}

void setLightPalette()
{
    if (isDark(QApplication::palette())) {
        QApplication::setPalette(lightPalette());
    }
}

/// Sets the light palette again when the desktop changes to a dark one.
class LightPaletteKeeper : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) {
            setLightPalette();
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

void Appearance::scaleWithTheScreen()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    // Later releases always scale, and warn about the attribute.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
#endif
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
}

void Appearance::keepLightPalette()
{
    setLightPalette();
    auto *const keeper = new LightPaletteKeeper(qApp);
    keeper->setObjectName(QStringLiteral("lightPaletteKeeper"));
    qApp->installEventFilter(keeper);
}
