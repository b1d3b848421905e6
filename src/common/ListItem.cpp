#include "common/ListItem.h"

CListItem::~CListItem() {
  for (std::unique_ptr<CListItem> item = std::move(next); item;)
    item = std::move(item->next);
}

void CListItem::Append(std::unique_ptr<CListItem> chain) {
  CListItem* last = this;
  while (last->next)
    last = last->next.get();
  last->next = std::move(chain);
}

CListItem* CListIterator::Next() {
  CListItem* item = current;
  if (item)
    current = item->Next();
  return item;
}

void CListBuilder::Append(std::unique_ptr<CListItem> item) {
  std::unique_ptr<CListItem>& end = tail ? tail->next : head;
  end = std::move(item);
  tail = end.get();
}

std::unique_ptr<CListItem> CListBuilder::Take() {
  tail = nullptr;
  return std::move(head);
}
