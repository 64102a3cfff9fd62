#include "Platform/Values/detail/CodePointSet.h"

#include <algorithm>
#include <utility>

namespace qz::detail {

CodePointSet::CodePointSet(std::vector<Range> ranges) : ranges_(std::move(ranges)) {
  for (Range& range : ranges_) range.end = std::min(range.end, limit);
  std::erase_if(ranges_, [](Range range) { return range.first >= range.end; });
  std::sort(ranges_.begin(), ranges_.end(), [](Range a, Range b) { return a.first < b.first; });
  std::size_t kept = 0;
  for (std::size_t i = 1; i < ranges_.size(); ++i) {
    if (ranges_[i].first <= ranges_[kept].end)
      ranges_[kept].end = std::max(ranges_[kept].end, ranges_[i].end);
    else
      ranges_[++kept] = ranges_[i];
  }
  if (!ranges_.empty()) ranges_.resize(kept + 1);
  ranges_.shrink_to_fit();
  makePages();
}

void CodePointSet::makePages() {
  auto fill = [](Page& page, std::size_t first, std::size_t end) {
    for (std::size_t bit = first; bit < end; ++bit)
      page[bit >> 6] |= std::uint64_t{1} << (bit & 63u);
  };
  auto range = ranges_.begin();
  for (char32_t start = 0; start < 0x10000; start += 0x100) {
    const char32_t end = start + 0x100;
    Page page{};
    for (; range != ranges_.end() && range->first < end; ++range) {
      fill(page, std::max(range->first, start) - start, std::min(range->end, end) - start);
      if (range->end > end) break;
    }
    if (start == 0) {
      latin_ = page;
      continue;
    }
    if (pages_.empty()) {
      if (page == Page{}) continue;
      pages_.push_back(Page{});  // the empty one, which pageOf_ names until told otherwise
    }
    auto same = std::find(pages_.begin(), pages_.end(), page);
    if (same == pages_.end()) same = pages_.insert(pages_.end(), page);
    // There are 255 pages beside the empty one at most, so a byte can name each.
    pageOf_[start >> 8] = static_cast<std::uint8_t>(same - pages_.begin());
  }
}

bool CodePointSet::holdsAbove(char32_t point) const noexcept {
  const auto after = std::upper_bound(ranges_.begin(), ranges_.end(), point,
                                      [](char32_t p, Range range) { return p < range.first; });
  return after != ranges_.begin() && point < std::prev(after)->end;
}

bool CodePointSet::isSupersetOf(const CodePointSet& other) const noexcept {
  auto mine = ranges_.begin();
  for (const Range& wanted : other.ranges_) {
    while (mine != ranges_.end() && mine->end < wanted.end) ++mine;
    if (mine == ranges_.end() || mine->first > wanted.first) return false;
  }
  return true;
}

CodePointSet CodePointSet::inverted() const {
  std::vector<Range> gaps;
  char32_t from = 0;
  for (const Range& range : ranges_) {
    gaps.push_back({from, range.first});
    from = range.end;
  }
  gaps.push_back({from, limit});
  return CodePointSet(std::move(gaps));
}

CodePointSet CodePointSet::unionWith(const CodePointSet& other) const {
  std::vector<Range> all = ranges_;
  all.insert(all.end(), other.ranges_.begin(), other.ranges_.end());
  return CodePointSet(std::move(all));
}

CodePointSet CodePointSet::intersectionWith(const CodePointSet& other) const {
  std::vector<Range> common;
  auto a = ranges_.begin();
  auto b = other.ranges_.begin();
  while (a != ranges_.end() && b != other.ranges_.end()) {
    common.push_back({std::max(a->first, b->first), std::min(a->end, b->end)});
    if (a->end < b->end)
      ++a;
    else
      ++b;
  }
  return CodePointSet(std::move(common));
}

CodePointSet CodePointSet::without(const CodePointSet& other) const {
  return intersectionWith(other.inverted());
}

}  // namespace qz::detail
