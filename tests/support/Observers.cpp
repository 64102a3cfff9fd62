#include "tests/support/Observers.h"

namespace qz::test {
namespace {

std::string text(NSObject* value) {
  if (value == NSNull::null()) return "(null)";
  auto* array = as<NSArray>(value);
  return array == nullptr ? to_string(value)
                          : "(" + array->componentsJoinedByString(" "_ns)->UTF8String() + ")";
}

bool notifiesFor(NSString* key) { return !key->isEqualToString("silent"_ns); }
Ref<NSSet> affectingRing() { return NSSet::setWithObjects({"ring"_ns, "value"_ns}); }
Ref<NSSet> affectingLabel() { return NSSet::setWithObject("twice"_ns); }

}  // namespace

void Recorder::observeValueForKeyPath_ofObject_change_context(NSString* keyPath, NSObject*,
                                                              NSDictionary* change,
                                                              void* theContext) {
  const char* const kinds[] = {"", "setting", "insertion", "removal", "replacement"};
  std::string line = keyPath->UTF8String();
  for (const auto& [key, value] : *change) {
    if (key == NSKeyValueChangeKindKey)
      line += std::string(" ") + kinds[as<NSNumber>(value)->intValue()];
    if (key == NSKeyValueChangeNewKey) line += " new=" + text(value);
    if (key == NSKeyValueChangeOldKey) line += " old=" + text(value);
    if (key == NSKeyValueChangeIndexesKey) line += " indexes=" + text(value);
    if (key == NSKeyValueChangeNotificationIsPriorKey) line += " prior";
  }
  lines.push_back(line);
  last = Ref<NSDictionary>(change);
  context = theContext;
}

void Recorder::describe(ClassDescription<Recorder>& is) { is.named("Recorder"); }
void Quitter::describe(ClassDescription<Quitter>& is) { is.named("Quitter"); }

void Node::describe(ClassDescription<Node>& is) {
  is.named("Node")
      .property<&Node::value, &Node::setValue>("value")
      .property<&Node::next, &Node::setNext>("next")
      .field<&Node::name>("name")
      .field<&Node::plain>("plain")
      .field<&Node::silent>("silent")
      .property<&Node::twice>("twice")
      .dependsOn({"value"})
      .property<&Node::total>("total")
      .dependsOn({"value", "next.total"})
      .method<&Node::twice>("label")
      .method<&Node::value>("ring")
      .classMethod<&notifiesFor>("automaticallyNotifiesObserversForKey:")
      .classMethod<&affectingLabel>("keyPathsForValuesAffectingLabel")
      .classMethod<&affectingRing>("keyPathsForValuesAffectingRing");
}

void Setting::describe(ClassDescription<Setting>& is) {
  is.named("Setting").property<&Setting::parts, &Setting::setParts>("parts");
}

void Accessing::describe(ClassDescription<Accessing>& is) {
  is.named("Accessing")
      .property<&Accessing::parts>("parts")
      .method<&Accessing::insertPart>("insertObject:inPartsAtIndex:")
      .method<&Accessing::removePart>("removeObjectFromPartsAtIndex:");
}

void Holding::describe(ClassDescription<Holding>& is) {
  is.named("Holding").readOnlyField<&Holding::parts>("parts");
}

}  // namespace qz::test
