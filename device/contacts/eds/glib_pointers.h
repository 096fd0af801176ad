#pragma once

#include <glib-object.h>

#include <cstddef>
#include <iterator>
#include <memory>

namespace kelpin::device::contacts {

struct ObjectDeleter {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <class Object>
using ObjectPointer = std::unique_ptr<Object, ObjectDeleter>;

struct TextDeleter {
  void operator()(gchar* text) const { g_free(text); }
};
using TextPointer = std::unique_ptr<gchar, TextDeleter>;

// Takes the error of a call: pass `&error.taken`.
struct ErrorHolder {
  ErrorHolder() = default;
  ~ErrorHolder() { g_clear_error(&taken); }
  ErrorHolder(const ErrorHolder&) = delete;
  ErrorHolder& operator=(const ErrorHolder&) = delete;

  const char* Message() const { return taken != nullptr ? taken->message : "no reason was told"; }

  GError* taken = nullptr;
};

// Goes through a GList or GSList of `Item*`.
template <class Item, class List>
class ListRange {
 public:
  class Iterator {
   public:
    explicit Iterator(List* place) : place_(place) {}
    Item* operator*() const { return static_cast<Item*>(place_->data); }
    Iterator& operator++() {
      place_ = place_->next;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return place_ != other.place_; }

   private:
    List* place_;
  };

  explicit ListRange(List* first) : first_(first) {}
  Iterator begin() const { return Iterator(first_); }
  Iterator end() const { return Iterator(nullptr); }

 private:
  List* first_;
};

template <class Item>
ListRange<Item, GList> Each(GList* list) {
  return ListRange<Item, GList>(list);
}
template <class Item>
ListRange<Item, GSList> Each(GSList* list) {
  return ListRange<Item, GSList>(list);
}

}  // namespace kelpin::device::contacts
