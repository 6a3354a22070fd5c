// File names, paths and numbers inside sentences that are written from right to left.
#pragma once

#include <QString>

namespace paperline {

// The value as it may stand in a sentence of the interface language: where that is written from
// right to left, between marks that keep the value's own order, from left to right, and its
// neighbours' apart. Other languages get the value as it is.
QString isolatedInSentence(const QString& value);

} // namespace paperline
