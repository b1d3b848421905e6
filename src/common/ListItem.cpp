#include "common/ListItem.h"

CListItem::~CListItem() {
  CListItem* item = next;
  next = nullptr;
  while (item) {
    CListItem* successor = item->next;
    item->next = nullptr;
    delete item;
    item = successor;
  }
}

void CListItem::Append(CListItem* chain) {
  CListItem* last = this;
  while (last->next)
    last = last->next;
  last->next = chain;
}

CListItem* CListIterator::Next() {
  CListItem* item = current;
  if (item)
    current = item->Next();
  return item;
}

void CListBuilder::Append(CListItem* item) {
  if (tail)
    tail->next = item;
  else
    head = item;
  tail = item;
}

CListItem* CListBuilder::Take() {
  CListItem* chain = head;
  head = tail = nullptr;
  return chain;
}
