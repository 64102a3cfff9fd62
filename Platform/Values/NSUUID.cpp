#include "Platform/Values/NSUUID.h"

#include <uuid/uuid.h>

#include <cstring>
#include <string>

#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"

namespace qz {

void NSUUID::describe(ClassDescription<NSUUID>& is) {
  is.named("NSUUID")
      .classMethod<&NSUUID::UUID>("UUID")
      .initializer<&NSUUID::initWithUUIDString>("initWithUUIDString:")
      .initializer<&NSUUID::initWithUUIDBytes>("initWithUUIDBytes:")
      .method<&NSUUID::UUIDString>("UUIDString")
      .method<&NSUUID::bytes>("bytes");
}

NSUUID::NSUUID() { ::uuid_generate_random(bytes_.data()); }

Ref<NSUUID> NSUUID::UUID() { return make<NSUUID>(); }

Ref<NSUUID> NSUUID::initWithUUIDBytes(const Bytes& bytes) { return make<NSUUID>(bytes); }

Ref<NSUUID> NSUUID::initWithUUIDString(NSString* text) {
  if (text == nullptr || text->length() != UUID_STR_LEN - 1) return nullptr;
  const std::string characters = text->UTF8String();
  Bytes bytes{};
  if (characters.size() != UUID_STR_LEN - 1 || ::uuid_parse(characters.c_str(), bytes.data()) != 0)
    return nullptr;
  return make<NSUUID>(bytes);
}

Ref<NSString> NSUUID::UUIDString() const {
  std::array<char, UUID_STR_LEN> text{};
  ::uuid_unparse_upper(bytes_.data(), text.data());
  return NSString::stringWithUTF8String(text.data());
}

bool NSUUID::isEqual(NSObject* other) const {
  const auto* uuid = as<NSUUID>(other);
  return uuid != nullptr && bytes_ == uuid->bytes_;
}

std::size_t NSUUID::hash() const {
  // Random bits already, but for those made by hand.
  std::array<std::uint64_t, 2> words{};
  std::memcpy(words.data(), bytes_.data(), bytes_.size());
  return static_cast<std::size_t>((words[0] ^ words[1]) * 0x9E3779B97F4A7C15u);
}

Ref<NSObject> NSUUID::copy() const { return const_cast<NSUUID*>(this); }

Ref<NSString> NSUUID::description() const { return UUIDString(); }

namespace {
NSUUID& requireUUID(NSUUID* uuid, const char* operation) {
  detail::requireArgument(operation, "the UUID", uuid);
  return *uuid;
}
}  // namespace

Ref<NSUUID> CFUUIDCreate() { return NSUUID::UUID(); }

Ref<NSString> CFUUIDCreateString(NSUUID* uuid) {
  return requireUUID(uuid, "CFUUIDCreateString").UUIDString();
}

NSUUID::Bytes CFUUIDGetUUIDBytes(NSUUID* uuid) {
  return requireUUID(uuid, "CFUUIDGetUUIDBytes").bytes();
}

}  // namespace qz
