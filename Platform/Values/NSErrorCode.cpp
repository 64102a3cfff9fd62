#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "Platform/Values/NSError.h"

namespace qz {
namespace {

/// The codes of a domain.
class DomainCategory final : public std::error_category {
 public:
  explicit DomainCategory(NSString* domain)
      : domain_(domain), name_(domain == nullptr ? std::string() : domain->UTF8String()) {}

  /// Codes keep a pointer to their category, so each lives for ever.
  static const DomainCategory& of(NSString* domain) {
    static std::mutex mutex;
    static auto& all = *new std::map<std::string, std::unique_ptr<DomainCategory>>;
    auto made = std::make_unique<DomainCategory>(domain);
    const std::lock_guard lock(mutex);
    auto& place = all[made->name_];
    if (!place) place = std::move(made);
    return *place;
  }

  Ref<NSError> error(int code) const { return make<NSError>(domain_, code, nullptr); }

  const char* name() const noexcept override { return name_.c_str(); }
  std::string message(int code) const override {
    return error(code)->localizedDescription()->UTF8String();
  }

 private:
  const Ref<NSString> domain_;
  const std::string name_;
};

}  // namespace

Ref<NSError> NSError::errorWithErrorCode(const std::error_code& error) {
  if (!error) return nullptr;
  const std::error_category& category = error.category();
  if (category == std::system_category() || category == std::generic_category())
    return make<NSError>(NSPOSIXErrorDomain, error.value(), nullptr);
  if (const auto* domain = dynamic_cast<const DomainCategory*>(&category))
    return domain->error(error.value());
  return make<NSError>(NSString::stringWithUTF8String(category.name()), error.value(),
                       NSString::stringWithUTF8String(error.message()));
}

std::error_code NSError::errorCode() const {
  if (equal(domain_, NSPOSIXErrorDomain)) return {code_, std::system_category()};
  return {code_, DomainCategory::of(domain_)};
}

}  // namespace qz
