#include "framework/list.h"

KListItem* KList::Append(KListItem* item)
{
    item->prev = tail;
    item->next = nullptr;
    if (tail) tail->next = item;
    else head = item;
    tail = item;
    ++count;
    return item;
}

void KList::Clear()
{
    while (head) {
        KListItem* item = head;
        head = item->next;
        if (head) head->prev = nullptr;
        item->next = item->prev = nullptr;
        --count;
        delete item;
    }
    head = tail = nullptr;
    count = 0;
}

KListItem* KList::PopHead()
{
    KListItem* item = head;
    if (!item) return nullptr;
    head = item->next;
    if (head) head->prev = nullptr;
    --count;
    return item;
}

KList& KList::operator=(KList&& other) noexcept
{
    if (this == &other) return *this;
    Clear();
    head = std::exchange(other.head, nullptr);
    tail = std::exchange(other.tail, nullptr);
    count = std::exchange(other.count, 0);
    return *this;
}
