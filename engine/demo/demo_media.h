// The picture and the sounds of the demo set, made rather than stored.
#pragma once

#include <string>

namespace imsdk::demo {

// A harbour at dusk as a PNG file, 480 by 300. `beams` turns the light of the lighthouse on.
// Throws `std::runtime_error` when the encoder fails.
std::string HarborPicture(bool beams);

// A ship's bell, two strokes, as a WAV file: mono, 8 kHz, 16 bits, about three seconds.
std::string ShipsBell();

}  // namespace imsdk::demo
