#include "ui/PlatformTexts.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QPointer>
#include <QTranslator>

#include <utility>

namespace paperline {
namespace {

class ButtonTexts : public QTranslator {
public:
    using QTranslator::QTranslator;

    void setBundle(std::shared_ptr<const LanguageBundle> bundle) { bundle_ = std::move(bundle); }
    bool isEmpty() const override { return bundle_ == nullptr; }

    // A null string makes Qt ask the next translator.
    QString translate(const char* context, const char* source, const char*, int) const override {
        if (QByteArrayView(context) != "QPlatformTheme")
            return {};
        QByteArray key(source);
        key.replace('&', "");
        if (bundle_ == nullptr || (key != "OK" && key != "Cancel" && key != "Close"))
            return {};
        return QString::fromStdString(bundle_->localizedString(key.toStdString()));
    }

private:
    std::shared_ptr<const LanguageBundle> bundle_;
};

} // namespace

void setPlatformTexts(std::shared_ptr<const LanguageBundle> bundle, const std::string& locale) {
    QCoreApplication* application = QCoreApplication::instance();
    if (application == nullptr)
        return;
    static QPointer<QTranslator> catalogue;
    static QPointer<ButtonTexts> buttons;
    if (catalogue == nullptr)
        catalogue = new QTranslator(application);
    if (buttons == nullptr)
        buttons = new ButtonTexts(application);
    QCoreApplication::removeTranslator(catalogue);
    QCoreApplication::removeTranslator(buttons);
    // The translator that is installed last is asked first.
    if (catalogue->load(QLocale(QString::fromStdString(locale)),
                        "qtbase",
                        "_",
                        QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(catalogue);
    buttons->setBundle(std::move(bundle));
    QCoreApplication::installTranslator(buttons);
}

} // namespace paperline
