#include "ui/BidirectionalText.h"

#include <QGuiApplication>

namespace paperline {
namespace {

constexpr QChar leftToRightIsolate(0x2066);
constexpr QChar popDirectionalIsolate(0x2069);

} // namespace

QString isolatedInSentence(const QString& value) {
    if (QGuiApplication::layoutDirection() != Qt::RightToLeft)
        return value;
    return leftToRightIsolate + value + popDirectionalIsolate;
}

} // namespace paperline
