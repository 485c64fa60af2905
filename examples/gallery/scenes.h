// Pictures that the gallery paints for itself.
#ifndef GALLERY_SCENES_H_
#define GALLERY_SCENES_H_

#include "canvas.h"

namespace gallery {

// An evening at a lake above a strip of test patterns: edges, texture, thin strokes, letters and noise in one picture.
Canvas testPicture(QelSize size);

// Frame t, counted from 0, of a sequence before a camera that stands still: a disc that orbits, a bar that turns, a
// ball that bounces, things that stay, and a little noise that is new in every frame.
Canvas movingShapes(QelSize size, int t);

}  // namespace gallery

#endif
