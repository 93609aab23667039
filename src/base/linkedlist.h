#pragma once

#include <list>

namespace LinkedList {

// A list of things that belong to others: nothing is ever deleted. An item stays valid as long as it is in
// a list.
template <class Item>
class Manager
{
public:
    void AddItem(Item* item) { m_items.push_back(item); }
    void RemoveItem(Item* item) { m_items.remove(item); } // nothing happens when it is not there
    int Count() const { return static_cast<int>(m_items.size()); }

    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

private:
    std::list<Item*> m_items;
};

} // namespace LinkedList
