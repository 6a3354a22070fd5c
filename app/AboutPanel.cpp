// The About command.
#include "controller/AppDelegate.h"

#include "app/Version.h"
#include "base/BrandProfile.h"
#include "base/CvOutputLog.h"
#include "platform/desktop/MainLoop.h"
#include "platform/host/DatePatterns.h"
#include "platform/host/Host.h"
#include "platform/plist/PropertyList.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QIcon>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QVBoxLayout>

#include <cstdlib>

namespace paperline {
namespace {

// From this minor system version on the About box is a plain message.
constexpr int firstMinorVersionWithMessage = 14;
constexpr int panelIconSizePoints = 128;
constexpr int panelMarginPoints = 24;
constexpr int lineSpacePoints = 8;
constexpr int groupSpacePoints = 16;

std::string bundleVersion(const std::string& bundle) {
    const PropertyListFile info = readPropertyList(bundle + "/Contents/Info.plist");
    const std::string version = textUnder(info.root, "CFBundleShortVersionString");
    return version.empty() ? versionText : version;
}

struct PanelTexts {
    std::string name, version, copyright;
};

void showStandardPanel(QWidget* parent, const QIcon& icon, const PanelTexts& texts) {
    QDialog panel(parent);
    panel.setWindowTitle(QString::fromStdString(texts.name));
    QVBoxLayout layout(&panel);
    layout.setContentsMargins(
        panelMarginPoints, panelMarginPoints, panelMarginPoints, panelMarginPoints);
    layout.setSpacing(lineSpacePoints);
    const auto addLabel = [&layout, &panel](const QString& text) {
        auto* label = new QLabel(text, &panel);
        label->setAlignment(Qt::AlignCenter);
        layout.addWidget(label);
        return label;
    };
    addLabel({})->setPixmap(icon.pixmap(panelIconSizePoints, panelIconSizePoints));
    layout.addSpacing(groupSpacePoints - lineSpacePoints);
    QLabel* heading = addLabel(QString::fromStdString(texts.name));
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    addLabel(QString::fromStdString(texts.version));
    addLabel(QString::fromStdString(texts.copyright));
    layout.addSpacing(groupSpacePoints - lineSpacePoints);
    QDialogButtonBox buttons(QDialogButtonBox::Close, &panel);
    buttons.setCenterButtons(true);
    buttons.button(QDialogButtonBox::Close)->setIcon({});
    QObject::connect(&buttons, &QDialogButtonBox::rejected, &panel, &QDialog::reject);
    layout.addWidget(&buttons);
    const DelayedMessagesHold hold;
    panel.exec();
}

} // namespace

void AppDelegate::orderFrontStandardAboutPanel(QObject* /*sender*/) {
    TraceScope trace("orderFrontStandardAboutPanel");
    const FormatMoment now{host().secondsSinceEpoch(), host().localeIdentifier(), ""};
    const int year = std::atoi(formatDate(now, "yyyy").c_str());
    const PanelTexts texts{brandProfile(gBrandNumber).productName,
                           bundleVersion(mCurrentPath),
                           copyrightLine(gBrandNumber, year)};
    if (mVersionMinor >= firstMinorVersionWithMessage)
        input(texts.name + "\n" + texts.version, texts.copyright);
    else
        showStandardPanel(
            paperlineWindow, QIcon(QString::fromStdString(mResourcePath + "/CPL.png")), texts);
}

} // namespace paperline
