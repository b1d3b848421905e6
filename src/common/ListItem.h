#pragma once

#include "common/Windows.h"

#include <memory>

// The base of every object that is kept in a chain: commands, permitted URLs and extensions, folders.
// A chain is named by its first item; every item owns the rest of the chain behind it.
class CListItem {
 public:
  CListItem() = default;
  CListItem(const CListItem&) = delete;
  CListItem& operator=(const CListItem&) = delete;

  // Deletes the successors too, one after the other, so that the length of a chain never costs stack.
  virtual ~CListItem();

  // Negative, zero or positive; zero means that `other` (which may be null) matches this item.
  virtual int Compare(const CListItem* other) const = 0;

  // True exactly when `name` is the class's own name. The module is built without type information; this is what it has.
  virtual bool IsKindOf(const char* name) const = 0;

  // Writes the item's main text into the log as it is, without head and line end.
  virtual void Dump() const = 0;

  CListItem* Next() const { return next.get(); }

  // Puts `chain` (which may be null) behind the last item of this item's chain.
  void Append(std::unique_ptr<CListItem> chain);

 private:
  friend class CListBuilder;
  std::unique_ptr<CListItem> next;
};

// A cursor over a chain. It owns nothing.
class CListIterator {
 public:
  explicit CListIterator(CListItem* first) : current(first) {}

  bool HasMore() const { return current != nullptr; }

  // The current item (null at the end of the chain); steps to its successor.
  CListItem* Next();

 private:
  CListItem* current;
};

// Collects items into a chain at a constant cost for each.
class CListBuilder {
 public:
  CListBuilder() = default;
  CListBuilder(const CListBuilder&) = delete;
  CListBuilder& operator=(const CListBuilder&) = delete;

  // Appends one item, which has no successor yet.
  void Append(std::unique_ptr<CListItem> item);

  // Hands the chain over; null when nothing was appended.
  std::unique_ptr<CListItem> Take();

 private:
  std::unique_ptr<CListItem> head;
  CListItem* tail = nullptr;
};
