// The PDF members of the codec table, by codecs/pdf/PdfFiles.h.
#pragma once

#include "output/PageCodecs.h"

namespace paperline {

void addPdfCodecs(PageCodecs& codecs);

} // namespace paperline
