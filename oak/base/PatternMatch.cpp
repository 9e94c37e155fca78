#include "oak/base/PatternMatch.h"

#include <algorithm>

namespace oak {

namespace {
constexpr auto npos = TStringView::npos;

/// Takes the first pattern off a filter text, ready to be matched.
TStringView TakePattern(TStringView& spec) noexcept {
  const std::size_t end = std::min(spec.find(u';'), spec.size());
  TStringView pattern = spec.substr(0, end);
  spec.remove_prefix(std::min(end + 1, spec.size()));
  while (pattern.starts_with(u' ')) pattern.remove_prefix(1);
  if (pattern.ends_with(u"*.*")) pattern.remove_suffix(2);
  return pattern;
}

/// Matches by returning to the last "*" only: what an earlier one took can't help
/// a later one.
bool MatchPattern(TStringView name, TStringView pattern) noexcept {
  std::size_t n = 0;
  std::size_t p = 0;
  std::size_t star = npos;
  std::size_t retry = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == u'*') {
      star = p++;
      retry = n;
    } else if (p < pattern.size() &&
               (pattern[p] == u'?' || UpCase(pattern[p]) == UpCase(name[n]))) {
      ++p;
      ++n;
    } else if (star != npos) {
      p = star + 1;
      n = ++retry;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == u'*') ++p;
  return p == pattern.size();
}

/// Equality with a text that is upper case already.
bool IsFolded(TStringView name, TStringView upper) noexcept {
  if (name.size() != upper.size()) return false;
  for (std::size_t i = 0; i < name.size(); ++i)
    if (name[i] != upper[i] && UpCase(name[i]) != upper[i]) return false;
  return true;
}

/// The same where "?" in the upper-case text stands for any character. From the
/// end, where names of one kind differ from those of others.
bool IsMasked(TStringView name, TStringView upper) noexcept {
  for (std::size_t i = upper.size(); i-- > 0;)
    if (upper[i] != name[i] && upper[i] != u'?' && UpCase(name[i]) != upper[i]) return false;
  return true;
}

/// Where a piece without "*" first occurs, or npos.
std::size_t FindMasked(TStringView name, TStringView upper, std::size_t from) noexcept {
  const char16_t first = upper.front();
  for (; from + upper.size() <= name.size(); ++from) {
    if (first != u'?' && UpCase(name[from]) != first) continue;
    if (IsMasked(name.substr(from, upper.size()), upper)) return from;
  }
  return npos;
}

/// Matches the pieces between two "*": each takes the first place behind the one
/// before. `pieces` begins and ends with "*".
bool MatchPieces(TStringView name, TStringView pieces) noexcept {
  std::size_t at = 0;
  while (pieces.size() > 1) {
    pieces.remove_prefix(1);
    const TStringView piece = pieces.substr(0, pieces.find(u'*'));
    pieces.remove_prefix(piece.size());
    if (piece.empty()) continue;
    at = FindMasked(name, piece, at);
    if (at == npos) return false;
    at += piece.size();
  }
  return true;
}
}  // namespace

bool MatchPatternSpec(TStringView name, TStringView spec) noexcept {
  while (!spec.empty()) {
    const TStringView pattern = TakePattern(spec);
    if (!pattern.empty() && MatchPattern(name, pattern)) return true;
  }
  return false;
}

void TPatternList::Add(TStringView spec) {
  while (!spec.empty()) {
    const TStringView pattern = TakePattern(spec);
    if (!pattern.empty()) AddPattern(pattern);
  }
}

void TPatternList::Clear() noexcept {
  fText.clear();
  fPatterns.clear();
  fMatchesAll = false;
}

void TPatternList::AddPattern(TStringView pattern) {
  TStringView core = pattern;
  while (core.starts_with(u'*')) core.remove_prefix(1);
  const bool isOpenBefore = core.size() < pattern.size();
  const std::size_t withTail = core.size();
  while (core.ends_with(u'*')) core.remove_suffix(1);
  const bool isOpenBehind = core.size() < withTail;

  TPattern added{TKind::General, 0, static_cast<std::uint32_t>(fText.size()), 0, 0, 0};
  if (core.empty()) {
    added.kind = TKind::All;
  } else if (core.find_first_of(u"*?") != npos) {
    core = pattern;
    const std::size_t firstStar = std::min(core.find(u'*'), core.size());
    added.head = static_cast<std::uint32_t>(firstStar);
    if (firstStar < core.size())
      added.tail = static_cast<std::uint32_t>(core.size() - core.rfind(u'*') - 1);
  } else if (isOpenBefore) {
    added.kind = isOpenBehind ? TKind::Contains : TKind::Suffix;
    added.last = UpCase(core.back());
  } else {
    added.kind = isOpenBehind ? TKind::Prefix : TKind::Exact;
  }
  added.length = static_cast<std::uint32_t>(core.size());
  fText += UpperCase(core);
  fPatterns.push_back(added);
  fMatchesAll |= added.kind == TKind::All;
}

bool TPatternList::MatchesPattern(const TPattern& pattern, TStringView name) const noexcept {
  const TStringView text(fText.data() + pattern.begin, pattern.length);
  if (pattern.kind == TKind::General) {
    const bool hasStar = pattern.head < text.size();
    const std::size_t least = pattern.head + std::size_t{pattern.tail};
    if (hasStar ? name.size() < least : name.size() != least) return false;
    return IsMasked(name.substr(name.size() - pattern.tail),
                    text.substr(text.size() - pattern.tail)) &&
           IsMasked(name.substr(0, pattern.head), text.substr(0, pattern.head)) &&
           (!hasStar || MatchPieces(name.substr(pattern.head, name.size() - least),
                                    text.substr(pattern.head, text.size() - least)));
  }
  if (name.size() < text.size()) return false;
  switch (pattern.kind) {
    case TKind::Suffix:
      return IsFolded(name.substr(name.size() - text.size()), text);
    case TKind::Prefix:
      return IsFolded(name.substr(0, text.size()), text);
    case TKind::Exact:
      return IsFolded(name, text);
    case TKind::Contains:
      return FindMasked(name, text, 0) != npos;
    default:
      return true;
  }
}

bool TPatternList::Matches(TStringView name) const noexcept {
  if (fMatchesAll) return true;
  // Most names fail at their last character.
  const char16_t last = name.empty() ? u'\0' : UpCase(name.back());
  for (const TPattern& pattern : fPatterns) {
    if (pattern.kind == TKind::Suffix && pattern.last != last) continue;
    if (MatchesPattern(pattern, name)) return true;
  }
  return false;
}

}  // namespace oak
