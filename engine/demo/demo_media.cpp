#include "demo/demo_media.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <stdexcept>

namespace imsdk::demo {

namespace {

constexpr int kWidth = 480;
constexpr int kHeight = 300;
constexpr int kHorizon = 190;

struct Colour {
  double red, green, blue;
};

Colour Mix(Colour a, Colour b, double share) {
  return {a.red + (b.red - a.red) * share, a.green + (b.green - a.green) * share,
          a.blue + (b.blue - a.blue) * share};
}

Colour Sky(int x, int y) {
  const Colour sky = Mix({28, 34, 74}, {244, 146, 92}, std::pow(double(y) / kHorizon, 1.6));
  const double sun = std::hypot(x - 150, y - 168);
  return sun < 26 ? Colour{255, 226, 160} : Mix({255, 190, 120}, sky, std::min(1.0, sun / 140));
}

Colour Sea(int x, int y) {
  const double depth = double(y - kHorizon) / (kHeight - kHorizon);
  const Colour sea = Mix({196, 118, 96}, {16, 26, 58}, std::sqrt(depth));
  const double wave = std::sin(x * 0.05 + y * y * 0.012) * std::sin(y * 0.9 + x * 0.011);
  const double glitter = std::abs(x - 150) < 14 + 50 * depth ? 0.55 : 0.18;
  return Mix(sea, {255, 214, 160}, std::max(0.0, wave) * glitter);
}

bool IsLand(int x, int y) { return y > 330 - 160 * std::exp(-std::pow((x - 392) / 80.0, 2)); }

bool IsTower(int x, int y) { return y > 62 && y < 176 && std::abs(x - 386) < 9 + (y - 62) / 16; }

Colour Pixel(int x, int y, bool beams) {
  if (IsTower(x, y)) {
    const Colour paint = (y - 62) / 19 % 2 == 0 ? Colour{232, 226, 214} : Colour{170, 48, 44};
    return Mix(paint, {20, 16, 30}, 0.35 + 0.02 * (x - 386));
  }
  if (y > 44 && y <= 62 && std::abs(x - 386) < 8) return {255, 240, 170};
  if (y > 34 && y <= 44 && std::abs(x - 386) < y - 33) return {60, 30, 34};
  if (IsLand(x, y)) return Mix({40, 36, 44}, {14, 14, 24}, double(y - 140) / 160);
  const Colour scene = y < kHorizon ? Sky(x, y) : Sea(x, y);
  const double spread = std::abs(y - 53) / (std::abs(x - 386) + 1.0);
  const bool lit = beams && spread < 0.16 && y < kHorizon;
  return lit ? Mix(scene, {255, 246, 200}, 0.45 * (1 - spread / 0.16)) : scene;
}

void AppendLittleEndian(std::string* out, std::uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out->push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

}  // namespace

std::string HarborPicture(bool beams) {
  std::string pixels;
  pixels.reserve(std::size_t{kWidth} * kHeight * 3);
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const Colour colour = Pixel(x, y, beams);
      for (const double part : {colour.red, colour.green, colour.blue}) {
        pixels.push_back(static_cast<char>(std::clamp(static_cast<int>(part), 0, 255)));
      }
    }
  }
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = kWidth;
  image.height = kHeight;
  image.format = PNG_FORMAT_RGB;
  std::string file(PNG_IMAGE_PNG_SIZE_MAX(image), '\0');
  png_alloc_size_t size = file.size();
  if (!png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr)) {
    throw std::runtime_error(image.message);
  }
  file.resize(size);
  return file;
}

std::string ShipsBell() {
  constexpr std::uint32_t kRate = 8000;
  constexpr std::uint32_t kSamples = kRate * 3;
  constexpr double kSecondStroke = 0.7;
  // Partials of a bell: pitch (as a multiple of the lowest), loudness, seconds of ringing.
  constexpr double kPartials[][3] = {
      {1.0, 0.35, 1.4}, {2.0, 0.3, 1.0}, {2.4, 0.2, 0.7}, {3.0, 0.12, 0.5}, {4.5, 0.08, 0.3}};
  std::string file = "RIFF";
  AppendLittleEndian(&file, 36 + kSamples * 2, 4);
  file += "WAVEfmt ";
  AppendLittleEndian(&file, 16, 4);
  AppendLittleEndian(&file, 1, 2);  // PCM
  AppendLittleEndian(&file, 1, 2);  // one channel
  AppendLittleEndian(&file, kRate, 4);
  AppendLittleEndian(&file, kRate * 2, 4);
  AppendLittleEndian(&file, 2, 2);
  AppendLittleEndian(&file, 16, 2);
  file += "data";
  AppendLittleEndian(&file, kSamples * 2, 4);
  for (std::uint32_t i = 0; i < kSamples; ++i) {
    double value = 0;
    for (const double stroke : {0.0, kSecondStroke}) {
      const double time = double(i) / kRate - stroke;
      if (time < 0) continue;
      for (const auto& [pitch, loudness, ringing] : kPartials) {
        value += loudness * std::exp(-time / ringing) *
                 std::sin(2 * std::numbers::pi * 523.25 * pitch * time);
      }
    }
    const auto sample = static_cast<std::int16_t>(std::clamp(value, -1.0, 1.0) * 28000);
    AppendLittleEndian(&file, static_cast<std::uint16_t>(sample), 2);
  }
  return file;
}

}  // namespace imsdk::demo
