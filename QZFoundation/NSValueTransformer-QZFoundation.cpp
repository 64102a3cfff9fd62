#include "QZFoundation/NSValueTransformer-QZFoundation.h"

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/Send.h"
#include "Platform/System/NSBundle.h"

namespace qz {
namespace {

Class* classNamed(NSString* name) {
  Class* const found = NSClassFromString(name);
  const bool isTransformer =
      found != nullptr && found->isSubclassOfClass(classOf<NSValueTransformer>());
  return isTransformer ? found : nullptr;
}

Ref<NSValueTransformer> plainTransformer(Class* aClass, NSArray* /*components*/) {
  return aClass->canMakeObjects() ? as<NSValueTransformer>(aClass->newObject()) : nullptr;
}

/// Calls `use` with each String of the Array that stands under `key`.
template <class Use>
void forEachString(NSDictionary* info, NSString* key, Use use) {
  const auto list = as<NSArray>(info->objectForKey(key));
  for (NSObject* each : list) {
    if (!isKind<NSString>(each)) continue;
    try {
      use(static_cast<NSString*>(each));
    } catch (const Raised&) {
      // One bad name must not keep the program from the others.
    }
  }
}

}  // namespace

Ref<NSValueTransformer> valueTransformerWithDynamicName(NSString* name) {
  if (name == nullptr) return nullptr;
  if (auto known = NSValueTransformer::valueTransformerForName(name)) return known;
  const Ref<NSArray> pieces = name->componentsSeparatedByString("-"_ns);
  const auto shortName = as<NSString>(pieces->objectAtIndex(0));
  Class* const aClass = classNamed(shortName->stringByAppendingString("ValueTransformer"_ns));
  if (aClass == nullptr) return nullptr;
  Ref<NSArray> components;
  if (pieces->count() > 1) components = pieces->subarrayWithRange({1, pieces->count() - 1});
  auto made = valueTransformerWithComponents(aClass, components);
  if (made) NSValueTransformer::setValueTransformer_forName(made, name);
  return made;
}

Ref<NSValueTransformer> valueTransformerWithComponents(Class* aClass, NSArray* components) {
  return send<Ref<NSValueTransformer>>(aClass, "valueTransformerWithComponents:"_sel, components);
}

void loadTransformers() {
  const Ref<NSString> path =
      NSBundle::mainBundle()->pathForResource_ofType("ValueTransformerInfo"_ns, "plist"_ns);
  if (!path) return;
  const Ref<NSDictionary> info = NSDictionary::dictionaryWithContentsOfFile(path);
  if (!info) return;
  forEachString(info, "transformerClasses"_ns, [](NSString* name) {
    if (Class* const aClass = NSClassFromString(name)) aClass->ensureInitialized();
  });
  forEachString(info, "dynamicValueTransformerNames"_ns,
                [](NSString* name) { valueTransformerWithDynamicName(name); });
}

void detail::registerNSValueTransformerQZFoundation() {
  extend<NSValueTransformer>("QZFoundation")
      .classMethod<&valueTransformerWithDynamicName>("valueTransformerWithDynamicName:")
      .classMethod<&plainTransformer>("valueTransformerWithComponents:")
      .classMethod<&loadTransformers>("loadTransformers");
}

}  // namespace qz
