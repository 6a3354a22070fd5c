#include "platform/qt/ColourScheme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QObject>

#include <utility>

namespace paperline {
namespace {

constexpr const char* portalService = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* settingsInterface = "org.freedesktop.portal.Settings";
constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* colourSchemeKey = "color-scheme";

ColourScheme schemeOf(uint code) {
    return code == 1   ? ColourScheme::dark
           : code == 2 ? ColourScheme::light
                       : ColourScheme::noPreference;
}

// The portal's Read wraps the value in two variants.
uint codeIn(const QDBusVariant& value) {
    const QVariant inner = value.variant();
    return inner.canConvert<QDBusVariant>() ? inner.value<QDBusVariant>().variant().toUInt()
                                            : inner.toUInt();
}

class PortalWatcher : public QObject {
    Q_OBJECT

public:
    PortalWatcher(QObject* owner, std::function<void(ColourScheme)> changed)
        : QObject(owner), changed_(std::move(changed)) {
        QDBusConnection bus = QDBusConnection::sessionBus();
        if (!bus.isConnected())
            return;
        bus.connect(portalService,
                    portalPath,
                    settingsInterface,
                    "SettingChanged",
                    this,
                    SLOT(settingChanged(QString, QString, QDBusVariant)));
        ask(bus);
    }

private slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
        if (group == appearance && key == colourSchemeKey)
            changed_(schemeOf(codeIn(value)));
    }

private:
    void ask(QDBusConnection& bus) {
        QDBusMessage call =
            QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, "Read");
        call << QString(appearance) << QString(colourSchemeKey);
        auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(call), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
            const QDBusPendingReply<QDBusVariant> reply = *answer;
            if (reply.isValid())
                changed_(schemeOf(codeIn(reply.value())));
            answer->deleteLater();
        });
    }

    std::function<void(ColourScheme)> changed_;
};

} // namespace

void watchColourScheme(QObject* owner, std::function<void(ColourScheme)> changed) {
    const QByteArray asked = qgetenv("PAPERLINE_COLOUR_SCHEME");
    if (asked == "dark" || asked == "light") {
        changed(asked == "dark" ? ColourScheme::dark : ColourScheme::light);
        return;
    }
    new PortalWatcher(owner, std::move(changed));
}

} // namespace paperline

#include "ColourScheme.moc"
