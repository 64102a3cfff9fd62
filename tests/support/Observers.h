// Objects that observe, and Objects worth observing.
#pragma once

#include "Platform/Runtime/NSKeyValueObserving.h"
#include "Platform/Values/NSIndexSet.h"
#include "tests/support/Test.h"

namespace qz::test {

/// Writes down what it is told: "value setting new=2 old=1".
class Recorder : public Derives<Recorder, NSObject> {
 public:
  static void describe(ClassDescription<Recorder>& is);
  void observeValueForKeyPath_ofObject_change_context(NSString* keyPath, NSObject* object,
                                                      NSDictionary* change, void* context) override;
  Lines lines;
  Ref<NSDictionary> last;
  void* context = nullptr;
};

/// A link of a chain, with keys that depend on others.
class Node : public Derives<Node, NSObject> {
 public:
  static void describe(ClassDescription<Node>& is);

  explicit Node(int value = 0) : value_(value) {}

  int value() const { return value_; }
  void setValue(int value) {
    KeyValueChange changing(this, "value"_ns);
    value_ = value;
  }
  Ref<Node> next() const { return next_; }
  void setNext(Node* next) {
    KeyValueChange changing(this, "next"_ns);
    next_ = Ref<Node>(next);
  }
  int twice() const { return 2 * value_; }
  int total() const { return value_ + (next_ ? next_->total() : 0); }

  std::string name;
  int plain = 0;
  int silent = 0;

 private:
  int value_ = 0;
  Ref<Node> next_;
};

/// Stops observing when it is destroyed, as cautious observers do.
class Quitter : public Derives<Quitter, Recorder> {
 public:
  static void describe(ClassDescription<Quitter>& is);
  explicit Quitter(Node* node) : node_(node) {
    node->addObserver_forKeyPath_options_context(this, "value"_ns, 0, nullptr);
  }
  ~Quitter() override { node_->removeObserver_forKeyPath(this, "value"_ns); }

 private:
  Ref<Node> node_;
};

// The three ways in which a to-many property is changed: "parts" is set, has operations for its
// elements, or is a MutableArray.

class Setting : public Derives<Setting, NSObject> {
 public:
  static void describe(ClassDescription<Setting>& is);
  Ref<NSArray> parts() const { return parts_; }
  void setParts(NSArray* parts) {
    KeyValueChange changing(this, "parts"_ns);
    parts_ = parts == nullptr ? nullptr : as<NSArray>(parts->copy());
  }

 private:
  Ref<NSArray> parts_ = NSMutableArray::array();
};

class Accessing : public Derives<Accessing, NSObject> {
 public:
  static void describe(ClassDescription<Accessing>& is);
  Ref<NSArray> parts() const { return as<NSArray>(parts_->copy()); }
  void insertPart(NSObject* part, std::uint32_t index) {
    parts_->insertObject_atIndex(part, index);
  }
  void removePart(std::uint32_t index) { parts_->removeObjectAtIndex(index); }

 private:
  Ref<NSMutableArray> parts_ = NSMutableArray::array();
};

class Holding : public Derives<Holding, NSObject> {
 public:
  static void describe(ClassDescription<Holding>& is);
  Ref<NSMutableArray> parts = NSMutableArray::array();
};

}  // namespace qz::test
