#include "QZFoundation/QZIndexMap.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSAssertionHandler.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/IntValue.h"

namespace qz {
namespace {

// The line named in the report of a failed assertion is part of its fixed text.
constexpr std::int32_t mismatchLine = 294;

void requireBelow(const char* operation, std::int64_t index, std::int64_t count) {
  if (index < 0 || index >= count)
    detail::raise(NSRangeException, std::string(operation) + ": index " + std::to_string(index) +
                                        " is not below count " + std::to_string(count));
}

}  // namespace

QZIndexMap::Vector QZIndexMap::newVector(std::int32_t count) {
  if (count <= 0) return nullptr;
  Vector vector(static_cast<std::int32_t*>(
      std::malloc(static_cast<std::size_t>(count) * sizeof(std::int32_t))));
  if (vector == nullptr)
    detail::raise(NSMallocException,
                  "QZIndexMap: no memory for " + std::to_string(count) + " entries");
  return vector;
}

Ref<QZIndexMap> QZIndexMap::adoptVector(Vector vector, std::int32_t count) {
  auto map = make<QZIndexMap>();
  map->indices_ = std::move(vector);
  map->count_ = std::max(count, 0);
  return map;
}

Ref<QZIndexMap> QZIndexMap::identityMapWithCount(std::int32_t count) {
  Vector vector = newVector(count);
  if (vector != nullptr) std::iota(vector.get(), vector.get() + count, 0);
  return adoptVector(std::move(vector), count);
}

Ref<QZIndexMap> QZIndexMap::mapToMoveIndices_toIndex_count(NSArray* indices,
                                                           std::int32_t destination,
                                                           std::int32_t count) {
  constexpr const char* operation = "mapToMoveIndices:toIndex:count:";
  Vector vector = newVector(count);
  std::vector<bool> moved(static_cast<std::size_t>(std::max(count, 0)));
  std::vector<std::int32_t> listed;
  if (indices != nullptr) {
    for (NSObject* element : *indices) {
      const std::int32_t index = detail::intValueOf(element);
      requireBelow(operation, index, count);
      const auto at = static_cast<std::size_t>(index);
      if (moved[at])
        detail::raise(NSRangeException,
                      operation + (": index " + std::to_string(index)) + " is listed twice");
      moved[at] = true;
      listed.push_back(index);
    }
  }

  std::int32_t* entry = vector.get();
  std::int32_t next = 0;
  auto copyUnmovedBelow = [&](std::int32_t end) {
    for (; next < end; ++next)
      if (!moved[static_cast<std::size_t>(next)]) *entry++ = next;
  };
  copyUnmovedBelow(std::min(destination, count));
  entry = std::copy(listed.begin(), listed.end(), entry);
  copyUnmovedBelow(count);
  return adoptVector(std::move(vector), count);
}

Ref<QZIndexMap> QZIndexMap::initWithIndicesNoCopy_count(std::int32_t* indices, std::int32_t count) {
  Vector vector(indices);
  if (count < 0 || (count > 0 && indices == nullptr))
    detail::raise(NSInvalidArgumentException, "QZIndexMap: a vector of " + std::to_string(count) +
                                                  " entries is " +
                                                  (count < 0 ? "not possible" : "missing"));
  return adoptVector(std::move(vector), count);
}

Ref<QZIndexMap> QZIndexMap::initWithIndices_count(const std::int32_t* indices, std::int32_t count) {
  if (count > 0 && indices == nullptr) return initWithIndicesNoCopy_count(nullptr, count);
  Vector vector = newVector(count);
  if (vector != nullptr) std::copy_n(indices, count, vector.get());
  return initWithIndicesNoCopy_count(vector.release(), count);
}

Ref<QZIndexMap> QZIndexMap::initWithIndices(NSArray* indices) {
  const auto count = static_cast<std::int32_t>(indices == nullptr ? 0 : indices->count());
  Vector vector = newVector(count);
  for (std::int32_t i = 0; i < count; ++i)
    vector[static_cast<std::size_t>(i)] =
        detail::intValueOf(indices->objectAtIndex(static_cast<std::uint32_t>(i)));
  return adoptVector(std::move(vector), count);
}

std::int32_t QZIndexMap::indexForIndex(std::int32_t index) const {
  requireBelow("indexForIndex:", index, count_);
  return indices_[static_cast<std::size_t>(index)];
}

Ref<QZIndexMap> QZIndexMap::mapByApplyingMap(QZIndexMap* other) {
  const std::int32_t otherCount = other == nullptr ? 0 : other->count_;
  if (otherCount != count_)
    NSAssertionHandler::currentHandler()->handleFailureInMethod_object_file_lineNumber_description(
        "mapByApplyingMap:"_sel, this, "QZIndexMap"_ns, mismatchLine,
        "Tried to apply map with differing numbers of indices"_ns);
  if (count_ > otherCount)  // the handler returned, and there is nothing to go on with
    requireBelow("mapByApplyingMap:", otherCount, otherCount);
  Vector vector = newVector(count_);
  for (std::size_t i = 0; i < count(); ++i) {
    const std::int32_t source = other->indices_[i];
    requireBelow("mapByApplyingMap:", source, count_);
    vector[i] = indices_[static_cast<std::size_t>(source)];
  }
  return adoptVector(std::move(vector), count_);
}

Ref<NSMutableArray> QZIndexMap::translateIndices(NSArray* indices) const {
  if (indices == nullptr) return NSMutableArray::arrayWithCapacity(0);
  auto translated = NSMutableArray::arrayWithCapacity(indices->count());
  for (NSObject* element : *indices) {
    const auto index = send<std::uint32_t>(element, "unsignedIntValue"_sel);
    if (index < count())
      translated->addObject(
          NSNumber::numberWithUnsignedInt(static_cast<std::uint32_t>(indices_[index])));
  }
  return translated;
}

Ref<QZIndexMap> QZIndexMap::reverseMap() const {
  Vector vector = newVector(count_);
  std::ranges::reverse_copy(entries(), vector.get());
  return adoptVector(std::move(vector), count_);
}

Ref<QZIndexMap> QZIndexMap::inverseMap() const {
  Vector vector = newVector(count_);
  std::fill_n(vector.get(), count_, -1);
  for (std::int32_t i = 0; i < count_; ++i) {
    const std::int32_t source = indices_[static_cast<std::size_t>(i)];
    requireBelow("inverseMap", source, count_);
    std::int32_t& entry = vector[static_cast<std::size_t>(source)];
    if (entry != -1)
      detail::raise(NSRangeException,
                    "inverseMap: index " + std::to_string(source) + " stands in the map twice");
    entry = i;
  }
  return adoptVector(std::move(vector), count_);
}

Ref<NSString> QZIndexMap::description() const {
  std::string text = Derives::description()->UTF8String();
  for (std::int32_t entry : entries()) text += std::to_string(entry) + " ";
  return NSString::stringWithUTF8String(text);
}

bool QZIndexMap::isEqual(NSObject* other) const {
  auto* map = as<QZIndexMap>(other);
  return map != nullptr && std::ranges::equal(entries(), map->entries());
}

std::size_t QZIndexMap::hash() const {
  std::size_t hash = count();
  for (std::int32_t entry : entries().first(std::min<std::size_t>(count(), 16)))
    hash = hash * 31 + static_cast<std::uint32_t>(entry);
  return hash;
}

Ref<NSObject> QZIndexMap::copy() const { return Ref<NSObject>(const_cast<QZIndexMap*>(this)); }

void QZIndexMap::describe(ClassDescription<QZIndexMap>& is) {
  is.named("QZIndexMap")
      .classMethod<&QZIndexMap::identityMapWithCount>("identityMapWithCount:")
      .classMethod<&QZIndexMap::mapToMoveIndices_toIndex_count>("mapToMoveIndices:toIndex:count:")
      .initializer<&QZIndexMap::initWithIndicesNoCopy_count>("initWithIndicesNoCopy:count:")
      .initializer<&QZIndexMap::initWithIndices_count>("initWithIndices:count:")
      .initializer<&QZIndexMap::initWithIndices>("initWithIndices:")
      .method<&QZIndexMap::count>("count")
      .method<&QZIndexMap::indices>("indices")
      .method<&QZIndexMap::indexForIndex>("indexForIndex:")
      .method<&QZIndexMap::mapByApplyingMap>("mapByApplyingMap:")
      .method<&QZIndexMap::translateIndices>("translateIndices:")
      .method<&QZIndexMap::reverseMap>("reverseMap")
      .method<&QZIndexMap::inverseMap>("inverseMap");
}

}  // namespace qz
