// The TIFF members of the table of codecs.
#pragma once

#include "output/PageCodecs.h"

namespace paperline {

void addTiffCodecs(PageCodecs& codecs);

} // namespace paperline
