// The PDF members of the codec table, by platform/PdfFiles.
#pragma once

#include "output/PageCodecs.h"

namespace paperline {

void addPdfCodecs(PageCodecs& codecs);

} // namespace paperline
