// Pictures in files. Both functions throw std::runtime_error with a message for the user.
#ifndef GALLERY_FILES_H_
#define GALLERY_FILES_H_

#include <string>

#include "image.h"

namespace gallery {

// Reads PNG, JPEG, PGM or PPM as three channels: red, green, blue.
Image<Qel8u> readPicture(const std::string& path);

// Writes one or three channels, in the format that the name's ending tells: .png, .jpg, .pgm or .ppm.
void writePicture(const std::string& path, const Image<Qel8u>& image);

}  // namespace gallery

#endif
