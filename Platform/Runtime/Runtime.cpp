// The run-time's tables: Selectors, classes, methods, and the published look-up tables.
#include <algorithm>
#include <array>
#include <deque>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>

#include "Platform/Runtime/Class.h"
#include "Platform/Runtime/ClassList.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Runtime/detail/ClassBuilder.h"
#include "Platform/Runtime/detail/ClassTables.h"
#include "Platform/Runtime/detail/Dispatch.h"
#include "Platform/Runtime/detail/KeyValue.h"
#include "Platform/Runtime/detail/RuntimeLock.h"

namespace qz::detail {
namespace {

constinit DispatchEntry emptyEntry{};

// Everything here lives until the process ends, so that the last code to run may still dispatch.
template <class T>
T& everlasting() {
  static T* const instance = new T();
  return *instance;
}

struct SelectorNames {
  std::shared_mutex mutex;
  std::unordered_map<std::string_view, const SelectorRecord*> byName;
  std::deque<std::string> texts;
  std::deque<SelectorRecord> records;
};

struct Registry {
  std::unordered_map<std::string_view, Class*> byName;
  std::unordered_map<const std::atomic<Class*>*, Class*> underConstruction;
  std::deque<std::unique_ptr<const DispatchTable>> tables;  // published ones are never freed
};

constinit std::atomic<LibraryHook*> pendingHooks{nullptr};

void runPendingHooks() {
  static std::atomic<bool> platformDone{false};
  RuntimeGuard guard;
  if (!platformDone.exchange(true)) registerPlatform();
  while (LibraryHook* hooks = pendingHooks.exchange(nullptr, std::memory_order_acquire)) {
    LibraryHook* ordered = nullptr;
    while (hooks != nullptr) {  // the list is newest first
      LibraryHook* next = hooks->next;
      hooks->next = ordered;
      ordered = hooks;
      hooks = next;
    }
    for (; ordered != nullptr; ordered = ordered->next) ordered->registerAll();
  }
}

const DispatchEntry* publish(const SelectorRecord& record, const DispatchEntry& entry) {
  auto& registry = everlasting<Registry>();
  const DispatchTable* old = record.dispatch.load(std::memory_order_relaxed);
  auto table = std::make_unique<const DispatchTable>(
      DispatchTable{VptrTable<DispatchEntry>::with(*old, entry)});
  const DispatchTable& kept = *registry.tables.emplace_back(std::move(table));
  record.dispatch.store(&kept, std::memory_order_release);
  return kept.find(entry.key);
}

// What was looked up before may no longer hold.
void forget(Selector selector) {
  selector.record()->dispatch.store(&emptyDispatchTable, std::memory_order_release);
}

}  // namespace

constinit const DispatchTable emptyDispatchTable{{.entries = &emptyEntry}};

std::recursive_mutex& runtimeMutex() noexcept { return everlasting<std::recursive_mutex>(); }

LibraryHook::LibraryHook(void (*function)()) noexcept : registerAll(function) {
  next = pendingHooks.load(std::memory_order_relaxed);
  while (!pendingHooks.compare_exchange_weak(next, this, std::memory_order_release)) {
  }
}

const SelectorRecord* findSelector(std::string_view name) {
  if (pendingHooks.load(std::memory_order_relaxed) != nullptr) runPendingHooks();
  auto& names = everlasting<SelectorNames>();
  std::shared_lock lock(names.mutex);
  auto found = names.byName.find(name);
  return found == names.byName.end() ? nullptr : found->second;
}

const SelectorRecord* internSelector(std::string_view name) {
  auto& names = everlasting<SelectorNames>();
  {
    std::shared_lock lock(names.mutex);
    if (auto found = names.byName.find(name); found != names.byName.end()) return found->second;
  }
  std::unique_lock lock(names.mutex);
  if (auto found = names.byName.find(name); found != names.byName.end()) return found->second;
  const std::string& text = names.texts.emplace_back(name);
  SelectorRecord& record = names.records.emplace_back();
  record.name = text;
  record.arguments = static_cast<std::uint32_t>(std::ranges::count(text, ':'));
  names.byName.emplace(record.name, &record);
  return &record;
}

const Method* ClassTables::findInstance(const Class* aClass, Selector selector) {
  for (const Class* c = aClass; c != nullptr; c = c->superclass_)
    if (auto found = c->tables_->methods.find(selector); found != c->tables_->methods.end())
      return &found->second;
  return nullptr;
}

const Method* ClassTables::findClassLevel(const Class* aClass, Selector selector) {
  for (const Class* c = aClass; c != nullptr; c = c->superclass_)
    if (auto found = c->tables_->classMethods.find(selector);
        found != c->tables_->classMethods.end())
      return &found->second;
  return findInstance(classOf<Class>(), selector);  // a Class is an Object as well
}

std::vector<std::string_view> ClassTables::dependenciesOf(const Class* aClass,
                                                          std::string_view key) {
  RuntimeGuard guard;
  std::vector<std::string_view> keyPaths;
  for (const Class* c = aClass; c != nullptr; c = c->superclass_) {
    auto [from, to] = c->tables_->dependencies.equal_range(key);
    for (; from != to; ++from) keyPaths.push_back(from->second);
  }
  return keyPaths;
}

void ClassTables::ensureInitialized(Class* aClass) {
  ClassTables& tables = *aClass->tables_;
  if (tables.initialized.load(std::memory_order_acquire)) return;
  if (aClass->superclass_ != nullptr) ensureInitialized(aClass->superclass_);
  std::lock_guard lock(tables.initializing);
  if (tables.initialized.load(std::memory_order_relaxed) || tables.insideInitialize) return;
  tables.insideInitialize = true;  // messages sent from inside must not start it again
  if (tables.initializer != nullptr) {
    try {
      tables.initializer();
    } catch (...) {
      tables.insideInitialize = false;
      throw;
    }
  }
  tables.initialized.store(true, std::memory_order_release);
}

const DispatchEntry* lookUpSlowly(const NSObject* receiver, Selector selector) {
  static constinit const DispatchEntry missing{};
  if (selector)
    if (const auto* known =
            selector.record()->dispatch.load(std::memory_order_acquire)->find(vptrOf(receiver)))
      return known;  // not at its first place
  if (pendingHooks.load(std::memory_order_relaxed) != nullptr) runPendingHooks();
  if (!selector) return &missing;

  static const std::uintptr_t classVptr = vptrOf(classOf<Class>());
  const bool toClass = vptrOf(receiver) == classVptr;
  const auto key = toClass ? reinterpret_cast<std::uintptr_t>(receiver) : vptrOf(receiver);
  const SelectorRecord& record = *selector.record();
  if (toClass)
    if (const auto* known = record.dispatch.load(std::memory_order_acquire)->find(key))
      return known;

  Class* aClass =
      toClass ? const_cast<Class*>(static_cast<const Class*>(receiver)) : receiver->classObject();
  ClassTables::ensureInitialized(aClass);

  RuntimeGuard guard;
  if (const auto* known = record.dispatch.load(std::memory_order_acquire)->find(key)) return known;
  const Method* method = toClass ? ClassTables::findClassLevel(aClass, selector)
                                 : ClassTables::findInstance(aClass, selector);
  DispatchEntry entry{.key = key};
  if (method != nullptr) entry = {key, method->imp, method->shape, method};
  return publish(record, entry);
}

Class* registerClass(const ClassSpec& spec) {
  RuntimeGuard guard;
  runPendingHooks();  // the libraries' classes have their names before anybody else takes one
  Class* above = spec.superclass();
  if (Class* known = spec.slot->load(std::memory_order_acquire)) return known;
  const auto& unfinished = everlasting<Registry>().underConstruction;
  if (auto found = unfinished.find(spec.slot); found != unfinished.end()) return found->second;

  auto* made = new Class(Class::ImmortalTag());
  auto& tables = everlasting<std::deque<ClassTables>>();
  made->tables_ = &tables.emplace_back();
  made->superclass_ = above;
  made->depth_ = above == nullptr ? 0 : above->depth_ + 1;
  made->factory_ = spec.factory;
  auto& ancestors = everlasting<std::deque<std::unique_ptr<const Class*[]>>>();
  made->ancestors_ =
      ancestors.emplace_back(std::make_unique<const Class*[]>(made->depth_ + 1)).get();
  std::copy_n(above == nullptr ? nullptr : above->ancestors_, made->depth_, made->ancestors_);
  made->ancestors_[made->depth_] = made;

  // The description may mention the class; other threads see it when it is whole.
  auto& registry = everlasting<Registry>();
  registry.underConstruction.emplace(spec.slot, made);
  try {
    ClassBuilder builder(made, {});
    spec.describe(builder);
    if (made->name_.empty())
      raise(NSInternalInconsistencyException, "a class was described without a name");
  } catch (...) {
    registry.underConstruction.erase(spec.slot);
    if (!made->name_.empty()) registry.byName.erase(made->name_);
    throw;
  }
  registry.underConstruction.erase(spec.slot);
  spec.slot->store(made, std::memory_order_release);
  return made;
}

bool isKindOfSlowly(const NSObject* object, Class* wanted, KnownVptrs& known) {
  const std::uintptr_t vptr = vptrOf(object);
  auto place = known.begin();
  for (; place != known.end(); ++place) {
    const std::uintptr_t taken = place->load(std::memory_order_relaxed);
    if (taken == vptr) return true;
    if (taken == 0) break;
  }
  if (!object->classObject()->isSubclassOfClass(wanted)) return false;
  // Whoever else came first: the next time there is another place, or none.
  std::uintptr_t empty = 0;
  if (place != known.end()) place->compare_exchange_strong(empty, vptr, std::memory_order_relaxed);
  return true;
}

void ClassBuilder::setName(std::string_view name) {
  auto& byName = everlasting<Registry>().byName;
  if (!class_->name_.empty())
    raise(NSInternalInconsistencyException,
          "class " + std::string(class_->name_) + " is named a second time");
  if (!byName.emplace(name, class_).second)
    raise(NSInternalInconsistencyException,
          "there is a class named " + std::string(name) + " already");
  class_->name_ = name;
}

namespace {

void addTo(MethodTable& methods, Class* owner, std::string_view category, std::string_view name,
           const MethodSpec& spec, const char* what) {
  const Selector selector = Selector::named(name);
  const auto refuse = [&](const std::string& why) {
    raise(NSInternalInconsistencyException,
          what + std::string(owner->name()) + " " + std::string(name) + why);
  };
  if (selector.numberOfArguments() != spec.arguments.size())
    refuse(" takes " + std::to_string(spec.arguments.size()) + " arguments, its name calls for " +
           std::to_string(selector.numberOfArguments()));
  const bool added = methods
                         .emplace(selector, Method{selector, spec.imp, spec.shape, spec.answer,
                                                   spec.arguments, owner, category})
                         .second;
  if (!added) refuse(" exists already: it is described twice");
  forget(selector);
}

}  // namespace

std::string setterName(std::string_view key) {
  std::string name = "set" + std::string(key) + ":";
  if (name[3] >= 'a' && name[3] <= 'z') name[3] = static_cast<char>(name[3] - 'a' + 'A');
  return name;
}

void ClassBuilder::addMethod(std::string_view name, const MethodSpec& spec) {
  addTo(class_->tables_->methods, class_, category_, name, spec, "operation ");
}

void ClassBuilder::addClassMethod(std::string_view name, const MethodSpec& spec) {
  addTo(class_->tables_->classMethods, class_, category_, name, spec, "class operation ");
}

void ClassBuilder::replaceMethod(std::string_view name, const MethodSpec& spec) {
  const Selector selector = Selector::named(name);
  const Method* old = ClassTables::findInstance(class_, selector);
  if (old == nullptr || old->shape != spec.shape)
    raise(NSInternalInconsistencyException,
          "operation " + std::string(class_->name()) + " " + std::string(name) +
              (old == nullptr ? " does not exist" : " is replaced by one of another type"));
  class_->replaceInstanceMethod(selector, spec.imp);
}

void ClassBuilder::addProperty(std::string_view key, const MethodSpec& getter,
                               const MethodSpec* setter) {
  addTo(class_->tables_->methods, class_, category_, key, getter, "property ");
  if (setter != nullptr)
    addTo(class_->tables_->methods, class_, category_, setterName(key), *setter, "property ");
  class_->tables_->propertyKeys.push_back(key);
}

void ClassBuilder::addDependency(std::string_view keyPath) {
  if (class_->tables_->propertyKeys.empty())
    raise(NSInternalInconsistencyException,
          "class " + std::string(class_->name()) + ": dependsOn stands before any property");
  class_->tables_->dependencies.emplace(class_->tables_->propertyKeys.back(), keyPath);
}

void ClassBuilder::setInitialize(void (*function)()) { class_->tables_->initializer = function; }

}  // namespace qz::detail

namespace qz {

Class* Class::named(std::string_view name) {
  detail::runPendingHooks();
  detail::RuntimeGuard guard;
  auto& byName = detail::everlasting<detail::Registry>().byName;
  auto found = byName.find(name);
  return found == byName.end() ? nullptr : found->second;
}

std::vector<Class*> allClasses() {
  detail::runPendingHooks();
  std::vector<Class*> found;
  {
    detail::RuntimeGuard guard;
    for (const auto& [name, aClass] : detail::everlasting<detail::Registry>().byName)
      found.push_back(aClass);
  }
  std::ranges::sort(found, {}, &Class::name);
  return found;
}

void Class::ensureInitialized() { detail::ClassTables::ensureInitialized(this); }

Ref<NSObject> Class::newObject() {
  if (factory_ == nullptr)
    detail::raise(NSInvalidArgumentException,
                  "Objects of class " + std::string(name_) + " cannot be made without arguments");
  ensureInitialized();
  return Ref<NSObject>(factory_(), adopt);
}

bool Class::instancesRespondToSelector(Selector selector) const {
  return instanceMethod(selector) != nullptr;
}

const detail::Method* Class::instanceMethod(Selector selector) const {
  if (detail::pendingHooks.load(std::memory_order_relaxed) != nullptr) detail::runPendingHooks();
  detail::RuntimeGuard guard;
  return detail::ClassTables::findInstance(this, selector);
}

const detail::Method* Class::classMethod(Selector selector) const {
  if (detail::pendingHooks.load(std::memory_order_relaxed) != nullptr) detail::runPendingHooks();
  detail::RuntimeGuard guard;
  return detail::ClassTables::findClassLevel(this, selector);
}

detail::Imp Class::replaceInstanceMethod(Selector selector, detail::Imp imp) {
  detail::RuntimeGuard guard;
  const detail::Method* old = instanceMethod(selector);
  if (old == nullptr) return nullptr;
  const detail::Imp before = old->imp;
  detail::Method replacement = *old;
  replacement.imp = imp;
  replacement.owner = this;
  // The tables of entries looked up before keep pointers to methods, so the old one must stay.
  auto& methods = tables_->methods;
  if (auto own = methods.find(selector); own != methods.end())
    tables_->replaced.push_back(methods.extract(own));
  methods.emplace(selector, replacement);
  detail::forget(selector);
  return before;
}

namespace {
std::vector<Selector> selectorsOf(const detail::MethodTable& methods) {
  std::vector<Selector> selectors;
  for (const auto& [selector, method] : methods) selectors.push_back(selector);
  return selectors;
}
}  // namespace

std::vector<Selector> Class::instanceSelectors() const {
  detail::RuntimeGuard guard;
  return selectorsOf(tables_->methods);
}

std::vector<Selector> Class::classSelectors() const {
  detail::RuntimeGuard guard;
  return selectorsOf(tables_->classMethods);
}

std::vector<std::string_view> Class::propertyKeys() const {
  detail::RuntimeGuard guard;
  return tables_->propertyKeys;
}

}  // namespace qz
