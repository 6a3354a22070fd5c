#include "ui/Theme.h"

#include "platform/qt/ColourScheme.h"
#include "viewer/Colours.h"

#include <QApplication>

namespace paperline {
namespace {

const QColor darkWindow(0x2b, 0x2d, 0x30);
const QColor darkBase(0x1e, 0x1f, 0x22);
const QColor darkButton(0x3a, 0x3d, 0x41);
const QColor lightText(0xe8, 0xe8, 0xe8);
const QColor fadedText(0x8a, 0x8c, 0x90);
const QColor darkLink(0x6c, 0xb2, 0xf5);

} // namespace

QPalette withReadableSelection(QPalette palette) {
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        const QColor text = palette.color(group, QPalette::HighlightedText);
        const QColor ground = palette.color(group, QPalette::Highlight);
        if (contrastRatio(ground, text) < readableContrast)
            palette.setColor(group, QPalette::Highlight, readableBackground(ground, text));
    }
    return palette;
}

QPalette darkPalette(const QPalette& platform) {
    QPalette palette(darkButton, darkWindow);
    palette.setColor(QPalette::Base, darkBase);
    palette.setColor(QPalette::AlternateBase, darkWindow);
    palette.setColor(QPalette::ToolTipBase, darkButton);
    for (const QPalette::ColorRole role : {QPalette::WindowText,
                                           QPalette::Text,
                                           QPalette::ButtonText,
                                           QPalette::ToolTipText,
                                           QPalette::BrightText}) {
        palette.setColor(role, lightText);
        palette.setColor(QPalette::Disabled, role, fadedText);
    }
    QColor placeholder = lightText;
    placeholder.setAlpha(140);
    palette.setColor(QPalette::PlaceholderText, placeholder);
    palette.setColor(QPalette::Link, darkLink);
    palette.setColor(QPalette::Highlight, platform.color(QPalette::Highlight));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

void followDesktopColours(QObject* owner) {
    const QPalette platform = QApplication::palette();
    QApplication::setPalette(withReadableSelection(platform));
    if (isDark(platform))
        return; // Qt follows the desktop itself
    watchColourScheme(owner, [platform](ColourScheme wish) {
        const bool dark = wish == ColourScheme::dark;
        QApplication::setPalette(withReadableSelection(dark ? darkPalette(platform) : platform));
    });
}

} // namespace paperline
