#include "client/picture_editor.h"

#include <png.h>

#include <algorithm>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "json_file.h"
#include "kexbase/md5.h"
#include "kexbase/strings.h"
#include "kexcom/result.h"
#include "served_files.h"

namespace imsdk::host {
namespace {

constexpr std::size_t kLargestFile = 32u << 20;  // bytes
constexpr std::size_t kMostPixels = 64u << 20;   // of the picture that is edited
constexpr unsigned kChannels = 4;                // red, green, blue, opacity
constexpr int kMostWaiting = 16;

struct Pixels {
  unsigned width = 0;
  unsigned height = 0;
  std::vector<png_byte> bytes;
};

std::optional<Pixels> Decode(const std::string& file) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!::png_image_begin_read_from_memory(&image, file.data(), file.size())) return std::nullopt;
  image.format = PNG_FORMAT_RGBA;
  Pixels pixels{image.width, image.height, {}};
  if (std::size_t{image.width} * image.height <= kMostPixels) {
    pixels.bytes.resize(PNG_IMAGE_SIZE(image));
    if (::png_image_finish_read(&image, nullptr, pixels.bytes.data(), 0, nullptr)) return pixels;
  }
  ::png_image_free(&image);
  return std::nullopt;
}

std::string Encode(const Pixels& pixels) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = pixels.width;
  image.height = pixels.height;
  image.format = PNG_FORMAT_RGBA;
  png_alloc_size_t size = 0;
  if (!::png_image_write_get_memory_size(image, size, 0, pixels.bytes.data(), 0, nullptr))
    return {};
  std::string file(size, '\0');
  if (!::png_image_write_to_memory(&image, file.data(), &size, 0, pixels.bytes.data(), 0,
                                   nullptr)) {
    return {};
  }
  file.resize(size);
  return file;
}

// Each pixel becomes the mean of those it covers; colours weigh as much as they are opaque.
Pixels ScaleDown(const Pixels& from, unsigned width, unsigned height,
                 const std::atomic<bool>& stop) {
  Pixels to{width, height, std::vector<png_byte>(std::size_t{width} * height * kChannels)};
  for (unsigned y = 0; y < height && !stop; ++y) {
    const std::size_t top = std::size_t{y} * from.height / height;
    const std::size_t bottom = std::max(top + 1, std::size_t{y + 1} * from.height / height);
    for (unsigned x = 0; x < width; ++x) {
      const std::size_t left = std::size_t{x} * from.width / width;
      const std::size_t right = std::max(left + 1, std::size_t{x + 1} * from.width / width);
      std::uint64_t colours[3] = {};
      std::uint64_t opacity = 0;
      for (std::size_t row = top; row < bottom; ++row) {
        for (std::size_t column = left; column < right; ++column) {
          const png_byte* pixel = &from.bytes[(row * from.width + column) * kChannels];
          for (int i = 0; i < 3; ++i) colours[i] += std::uint64_t{pixel[i]} * pixel[3];
          opacity += pixel[3];
        }
      }
      png_byte* pixel = &to.bytes[(std::size_t{y} * width + x) * kChannels];
      for (int i = 0; i < 3; ++i) {
        pixel[i] = static_cast<png_byte>(opacity == 0 ? 0 : colours[i] / opacity);
      }
      pixel[3] = static_cast<png_byte>(opacity / ((bottom - top) * (right - left)));
    }
  }
  return to;
}

Pixels Fit(Pixels pixels, const std::atomic<bool>& stop) {
  const unsigned longest = std::max(pixels.width, pixels.height);
  if (longest <= kLongestSide) return pixels;
  const auto scaled = [longest](unsigned side) {
    return std::max(1u, static_cast<unsigned>(std::uint64_t{side} * kLongestSide / longest));
  };
  return ScaleDown(pixels, scaled(pixels.width), scaled(pixels.height), stop);
}

biz::ResultCode HostStops() { return {E_UNEXPECTED, 0, L"the host stops"}; }

// The edited picture's path relative to `data`.
biz::ResultCode Edit(const std::filesystem::path& data, const base::FilePath& file,
                     const std::wstring& md5, const std::atomic<bool>& stop,
                     base::FilePath* edited) {
  if (stop) return HostStops();
  const FoundFile found = FindInside(data / "files", data, base::WideToUTF8(file.value()));
  const auto content = found.status == 200 ? ReadFile(found.path, kLargestFile) : std::nullopt;
  if (!content) return {biz::kEngineNotFound, 0, L"there is no such picture"};
  if (!md5.empty() && base::MD5String(*content) != base::WideToUTF8(md5)) {
    return {E_INVALIDARG, 0, L"the picture is another one"};
  }
  auto pixels = Decode(*content);
  if (pixels) pixels = Fit(std::move(*pixels), stop);
  if (stop) return HostStops();
  const std::string made = pixels ? Encode(*pixels) : std::string();
  if (made.empty()) return {E_INVALIDARG, 0, L"this is no PNG that can be edited"};
  const std::string name = "files/edited/" + base::MD5String(made) + ".png";
  std::error_code failure;
  std::filesystem::create_directories(data / "files" / "edited", failure);
  if (!WriteFile(data / name, made))
    return {biz::kEngineStorage, 0, L"the edited picture could not be kept"};
  *edited = base::FilePath::FromUTF8(name);
  return {};
}

}  // namespace

void PictureEditor::EditImage(const base::FilePath& file, const std::wstring& md5,
                              client::IMEditCallback done) {
  if (++waiting_ > kMostWaiting) {
    --waiting_;
    return done({biz::kEngineBusy, 0, L"too many pictures wait to be edited"}, {});
  }
  const auto edit = [this, file, md5, done] {
    base::FilePath edited;
    const biz::ResultCode result = Edit(data_, file, md5, stopped_, &edited);
    --waiting_;
    done(result, edited);
  };
  if (!thread_.task_runner()->PostTask(FROM_HERE, edit)) {
    --waiting_;
    done(HostStops(), {});
  }
}

void PictureEditor::Stop() {
  stopped_ = true;
  thread_.Stop();
}

}  // namespace imsdk::host
