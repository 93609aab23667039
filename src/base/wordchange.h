#pragma once

#include <QObject>

#include <functional>
#include <optional>

// Connects a signal that tells a word with a slot that is to hear of changes alone. A link tells all its
// words anew when it comes back; one that is still as it was last told is no change, and must neither sound
// an alarm nor fill the journal again. The first telling counts as a change. The signal must belong to one
// word.
template <class Sender, class Source, class Value, class Receiver, class Slot>
void connectChanges(const Sender* sender, void (Source::*signal)(Value), Receiver* receiver, Slot slot)
{
    QObject::connect(sender, signal, receiver,
                     [receiver, slot, told = std::optional<Value>()](Value value) mutable {
                         if (told == value)
                             return;
                         told = value;
                         std::invoke(slot, receiver, value);
                     });
}
