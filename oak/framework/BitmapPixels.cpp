#include "oak/framework/BitmapPixels.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace oak {
namespace {

/// What one pixel of the result takes of the source, along one side. The weights sum up to 65536.
struct TTaps {
  int First = 0;
  std::vector<std::uint32_t> Weights;
};

/// Rounds weights so that their sum is exact: what rounding loses goes to the largest.
void SetWeights(TTaps& taps, const std::vector<double>& weights) {
  double sum = 0;
  for (double weight : weights) sum += weight;
  taps.Weights.resize(weights.size());
  std::uint32_t given = 0;
  std::size_t largest = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    taps.Weights[i] = static_cast<std::uint32_t>(weights[i] / sum * 65536);
    given += taps.Weights[i];
    if (weights[i] > weights[largest]) largest = i;
  }
  taps.Weights[largest] += 65536 - given;
}

TTaps NearestTaps(int index, int source, int size) {
  const long long middle = (2LL * index + 1) * source / (2LL * size);
  return {std::clamp(static_cast<int>(middle), 0, source - 1), {65536}};
}

/// All source pixels that the result's pixel covers, each by the part that is covered.
TTaps AreaTaps(int index, int source, int size) {
  const double scale = static_cast<double>(source) / size;
  const double from = index * scale;
  const double to = std::min<double>((index + 1) * scale, source);
  TTaps taps;
  taps.First = std::min(static_cast<int>(from), source - 1);
  std::vector<double> weights;
  for (int i = taps.First; i < source && i < to; ++i)
    weights.push_back(std::min<double>(i + 1, to) - std::max<double>(i, from));
  if (weights.empty()) weights.push_back(1);
  SetWeights(taps, weights);
  return taps;
}

/// The two nearest pixels, by distance of their middles.
TTaps LinearTaps(int index, int source, int size) {
  const double middle = (index + 0.5) * source / size - 0.5;
  const double floor = std::floor(middle);
  const int left = static_cast<int>(floor);
  TTaps taps;
  taps.First = std::clamp(left, 0, source - 1);
  if (left < 0 || left + 1 >= source)
    taps.Weights = {65536};
  else
    SetWeights(taps, {1 - (middle - floor), middle - floor});
  return taps;
}

std::vector<TTaps> MakeTaps(int source, int size, int from, int to, TStretchFilter filter) {
  std::vector<TTaps> result;
  result.reserve(static_cast<std::size_t>(to - from));
  for (int i = from; i < to; ++i) {
    if (filter == TStretchFilter::Nearest)
      result.push_back(NearestTaps(i, source, size));
    else
      result.push_back(size < source ? AreaTaps(i, source, size) : LinearTaps(i, source, size));
  }
  return result;
}

/// Resamples rows of the source and keeps the last two, which is what neighbours in the result
/// share.
class TRowSampler {
 public:
  TRowSampler(const TBitmap& source, std::vector<TTaps> columns)
      : fSource(source), fColumns(std::move(columns)) {
    for (auto& row : fRows) row.resize(fColumns.size() * 4);
  }

  /// Four parts of 16 bits for each column.
  const std::vector<std::uint32_t>& GetRow(int y) {
    auto& row = fRows[y & 1];
    if (fKept[y & 1] != y) Sample(y, row);
    fKept[y & 1] = y;
    return row;
  }

 private:
  void Sample(int y, std::vector<std::uint32_t>& row) const {
    const TPixel* pixels = fSource.ScanLine(y);
    std::uint32_t* out = row.data();
    for (const TTaps& taps : fColumns) {
      std::uint32_t sum[4] = {};
      const TPixel* pixel = pixels + taps.First;
      for (std::uint32_t weight : taps.Weights) {
        for (int part = 0; part < 4; ++part) sum[part] += (*pixel >> (8 * part) & 0xFF) * weight;
        ++pixel;
      }
      for (int part = 0; part < 4; ++part) *out++ = sum[part] >> 8;
    }
  }

  const TBitmap& fSource;
  std::vector<TTaps> fColumns;
  std::vector<std::uint32_t> fRows[2];
  int fKept[2] = {-1, -1};
};

void WriteRow(const std::vector<std::uint32_t>& sums, TPixel* out) {
  for (std::size_t i = 0; i < sums.size(); i += 4) {
    TPixel pixel = 0;
    for (unsigned part = 0; part < 4; ++part)
      pixel |= ((sums[i + part] + 0x800000u) >> 24) << (8 * part);
    *out++ = pixel;
  }
}

}  // namespace

TPixel Unpremultiply(TPixel pixel) noexcept {
  const std::uint32_t alpha = AlphaOf(pixel);
  if (alpha == 0) return 0;
  TPixel result = pixel & 0xFF000000u;
  for (unsigned shift = 0; shift < 24; shift += 8)
    result |= std::min(255u, ((pixel >> shift & 0xFF) * 255 + alpha / 2) / alpha) << shift;
  return result;
}

void BlendBitmap(TBitmap& dest, const TRect& clip, TPoint at, const TBitmap& source, int opacity) {
  const TRect part = TRect(at, source.GetSize()).Intersected(clip).Intersected(dest.GetRect());
  if (part.IsEmpty() || opacity <= 0) return;
  if (&source == &dest) {
    TBitmap copy;
    copy.Assign(&source);
    return BlendBitmap(dest, clip, at, copy, opacity);
  }
  const auto factor = static_cast<std::uint32_t>(std::min(opacity, 255));
  const TPixel force = source.GetAlphaFormat() == afIgnored ? 0xFF000000u : 0;
  for (int y = part.Top; y < part.Bottom; ++y) {
    const TPixel* from = source.ScanLine(y - at.Y) + (part.Left - at.X);
    TPixel* to = dest.ScanLine(y) + part.Left;
    for (int x = part.Left; x < part.Right; ++x, ++from, ++to) {
      const TPixel over = *from | force;
      *to = BlendPixel(*to, factor == 255 ? over : ScalePixel(over, factor));
    }
  }
}

TBitmap ResampleBitmap(const TBitmap& source, TSize size, const TRect& window,
                       TStretchFilter filter) {
  TBitmap result(window.Width(), window.Height(), source.GetAlphaFormat());
  if (source.IsEmpty() || result.IsEmpty()) return result;
  TRowSampler sampler(source,
                      MakeTaps(source.GetWidth(), size.Width, window.Left, window.Right, filter));
  const std::vector<TTaps> rows =
      MakeTaps(source.GetHeight(), size.Height, window.Top, window.Bottom, filter);
  std::vector<std::uint32_t> sums(static_cast<std::size_t>(result.GetWidth()) * 4);
  for (int y = 0; y < result.GetHeight(); ++y) {
    std::fill(sums.begin(), sums.end(), 0u);
    const TTaps& taps = rows[static_cast<std::size_t>(y)];
    int sourceY = taps.First;
    for (std::uint32_t weight : taps.Weights) {
      const std::vector<std::uint32_t>& row = sampler.GetRow(sourceY++);
      for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += row[i] * weight;
    }
    WriteRow(sums, result.ScanLine(y));
  }
  if (source.GetAlphaFormat() == afIgnored) result.SetAlphaFormat(afIgnored);
  return result;
}

void CopyPixels(TBitmap& dest, const TRect& clip, const TRect& destRect, const TBitmap& source,
                const TRect& sourceRect) {
  const TRect part = destRect.Intersected(clip).Intersected(dest.GetRect());
  if (part.IsEmpty() || sourceRect.IsEmpty() || source.IsEmpty()) return;
  if (&source == &dest) {
    TBitmap copy;
    copy.Assign(&source);
    return CopyPixels(dest, clip, destRect, copy, sourceRect);
  }
  auto map = [](int at, int from, int size, int sourceFrom, int sourceSize) {
    return sourceFrom + static_cast<int>((2LL * (at - from) + 1) * sourceSize / (2LL * size));
  };
  const TPixel force =
      dest.GetAlphaFormat() == afIgnored || source.GetAlphaFormat() == afIgnored ? 0xFF000000u : 0;
  for (int y = part.Top; y < part.Bottom; ++y) {
    const int sourceY =
        map(y, destRect.Top, destRect.Height(), sourceRect.Top, sourceRect.Height());
    if (sourceY < 0 || sourceY >= source.GetHeight()) continue;
    const TPixel* from = source.ScanLine(sourceY);
    TPixel* to = dest.ScanLine(y);
    for (int x = part.Left; x < part.Right; ++x) {
      const int sourceX =
          map(x, destRect.Left, destRect.Width(), sourceRect.Left, sourceRect.Width());
      if (sourceX >= 0 && sourceX < source.GetWidth()) to[x] = from[sourceX] | force;
    }
  }
}

}  // namespace oak
