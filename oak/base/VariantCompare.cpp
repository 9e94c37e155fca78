// The order of values.
#include <cmath>
#include <utility>

#include "oak/base/Guid.h"
#include "oak/base/LogicalOrder.h"
#include "oak/base/VariantParts.h"

namespace oak {

namespace {
using detail::TContent;
using detail::TNothing;

int Sign(int order) noexcept { return (order > 0) - (order < 0); }

template <class T>
int OrderOf(const T& a, const T& b) noexcept {
  return a < b ? -1 : b < a ? 1 : 0;
}

bool IsWithoutValue(const PROPVARIANT& value) noexcept {
  if (detail::IsEmptyType(value.vt)) return true;
  return (value.vt & VT_VECTOR) != 0 && value.calpwstr.cElems == 0;
}

/// A whole number against a real one, exact where a conversion would round.
int CompareWholeWithReal(auto whole, double real) noexcept {
  if (std::isnan(real)) return 1;
  using T = decltype(whole);
  constexpr double kEnd = std::is_signed_v<T> ? 0x1p63 : 0x1p64;
  if (real >= kEnd) return -1;
  if (real < (std::is_signed_v<T> ? -0x1p63 : 0.0)) return 1;
  const T floor = static_cast<T>(real);
  if (whole != floor) return whole < floor ? -1 : 1;
  return OrderOf(static_cast<double>(floor), real);
}

/// Real numbers, "no number" before all others so that the order is total.
int CompareReals(double a, double b) noexcept {
  if (std::isnan(a) || std::isnan(b)) return OrderOf(!std::isnan(a), !std::isnan(b));
  return OrderOf(a, b);
}

bool IsNumber(const TContent& content) noexcept {
  return std::holds_alternative<std::int64_t>(content) ||
         std::holds_alternative<std::uint64_t>(content) || std::holds_alternative<double>(content);
}

int CompareNumbers(const TContent& a, const TContent& b) noexcept {
  return std::visit(
      [](const auto& x, const auto& y) -> int {
        using X = std::decay_t<decltype(x)>;
        using Y = std::decay_t<decltype(y)>;
        constexpr bool kWholeX =
            std::is_same_v<X, std::int64_t> || std::is_same_v<X, std::uint64_t>;
        constexpr bool kWholeY =
            std::is_same_v<Y, std::int64_t> || std::is_same_v<Y, std::uint64_t>;
        if constexpr (kWholeX && kWholeY)
          return std::cmp_less(x, y) ? -1 : std::cmp_less(y, x) ? 1 : 0;
        else if constexpr (std::is_same_v<X, double> && std::is_same_v<Y, double>)
          return CompareReals(x, y);
        else if constexpr (kWholeX && std::is_same_v<Y, double>)
          return CompareWholeWithReal(x, y);
        else if constexpr (std::is_same_v<X, double> && kWholeY)
          return -CompareWholeWithReal(y, x);
        else
          return 0;
      },
      a, b);
}

/// Contents of one kind.
int CompareSameKind(const TContent& a, const TContent& b) {
  if (const auto* flag = std::get_if<bool>(&a)) return OrderOf(*flag, std::get<bool>(b));
  if (const auto* moment = std::get_if<detail::TMoment>(&a))
    return CompareFileTimes(moment->time, std::get<detail::TMoment>(b).time);
  if (const auto* text = std::get_if<TString>(&a))
    return Sign(CompareLogical(*text, std::get<TString>(b)));
  if (const auto* guid = std::get_if<GUID>(&a)) return Sign(CompareGuids(*guid, std::get<GUID>(b)));
  return 0;
}

int CompareContents(const TContent& a, const TContent& b) {
  if (IsNumber(a) && IsNumber(b)) return CompareNumbers(a, b);
  return a.index() == b.index() ? CompareSameKind(a, b) : OrderOf(a.index(), b.index());
}

int CompareValues(const PROPVARIANT& a, const PROPVARIANT& b) {
  if (IsWithoutValue(a) || IsWithoutValue(b)) return OrderOf(IsWithoutValue(b), IsWithoutValue(a));
  const TContent x = detail::ReadContent(a);
  const TContent y = detail::ReadContent(b);
  if (x.index() == y.index() || (IsNumber(x) && IsNumber(y)))
    return std::holds_alternative<TNothing>(x) ? OrderOf(a.vt, b.vt) : CompareContents(x, y);
  TPropVariant converted;
  if (SUCCEEDED(ChangeType(b, a.vt, *converted.Put())))
    return CompareContents(x, detail::ReadContent(converted));
  if (SUCCEEDED(ChangeType(a, b.vt, *converted.Put())))
    return CompareContents(detail::ReadContent(converted), y);
  return OrderOf(a.vt, b.vt);
}
}  // namespace

int ComparePropVariants(const PROPVARIANT& a, const PROPVARIANT& b) noexcept {
  try {
    return CompareValues(a, b);
  } catch (...) {
    return OrderOf(a.vt, b.vt);  // out of memory
  }
}

int CompareVariants(const VARIANT& a, const VARIANT& b) noexcept {
  TPropVariant x, y;
  const bool hasX = SUCCEEDED(VariantToPropVariantValue(a, *x.Put()));
  const bool hasY = SUCCEEDED(VariantToPropVariantValue(b, *y.Put()));
  if (!hasX || !hasY) return OrderOf(a.vt, b.vt);
  return ComparePropVariants(x, y);
}

}  // namespace oak
