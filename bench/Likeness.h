// How alike two pictures look.
#pragma once

#include "codecs/pixels/BitmapImageRep.h"

namespace paperline::bench {

// Peak signal to noise ratio in decibels of two 24-bit pictures, each blurred as an eye at reading
// distance does (three means over 5 x 5 pixels, near a Gaussian of 2.4 pixels): a pattern of dots
// counts as the shade that it stands for. 0 when the sizes differ, 99 when nothing else does.
double blurredPsnr(const BitmapImageRep& a, const BitmapImageRep& b);

} // namespace paperline::bench
