/// @file
/// The references: the same classes as a C++ programmer writes them, with virtual functions and an
/// intrusive count. Their members are defined in a file of their own, so that calls stay virtual.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>
#include <vector>

namespace qz::bench::plain {

class Object {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object();

  void retain() const noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
  void release() const noexcept {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

 private:
  mutable std::atomic<std::int32_t> count_{1};
};

template <class T>
class Handle {
 public:
  Handle() = default;
  explicit Handle(T* adopted) : object_(adopted) {}
  Handle(const Handle& other) : object_(other.object_) {
    if (object_ != nullptr) object_->retain();
  }
  Handle(Handle&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Handle& operator=(Handle other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Handle() {
    if (object_ != nullptr) object_->release();
  }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  T* get() const { return object_; }

 private:
  T* object_ = nullptr;
};

class Address : public Object {
 public:
  explicit Address(int zip) : zip_(zip) {}
  virtual int zip() const;

 private:
  int zip_;
};

class Company : public Object {
 public:
  explicit Company(Handle<Address> address) : address_(std::move(address)) {}
  virtual Handle<Address> address() const;

 private:
  Handle<Address> address_;
};

class Person : public Object {
 public:
  explicit Person(int age = 0, Handle<Company> employer = {})
      : age_(age), employer_(std::move(employer)) {}
  virtual int age() const;
  virtual void setAge(int age);
  virtual bool isAdult() const;
  virtual Handle<Company> employer() const;
  virtual int compareByAge(const Person& other) const;

 protected:
  int age_;
  Handle<Company> employer_;
};

/// A polymorphic integer, as one puts it into a container of base pointers.
class Value {
 public:
  virtual ~Value();
};
class Int : public Value {
 public:
  explicit Int(std::int32_t value) : value_(value) {}
  virtual std::int32_t value() const;

 private:
  std::int32_t value_;
};

using People = std::vector<Handle<Person>>;
People makePeople(const std::vector<std::int32_t>& ages);
People makeMixedPeople(const std::vector<std::int32_t>& ages);

}  // namespace qz::bench::plain
