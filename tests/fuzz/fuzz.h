#pragma once

#include "gui.h"
#include "sitefixture.h"

#include <map>
#include <memory>
#include <random>

// A way in from outside: takes any bytes at all. An input that a program would not have stood ends the
// process, by an assertion, by fuzzCheck or under a sanitizer. Stands on a site without pauses, where every
// dialog and menu is left at once.
class FuzzTarget
{
public:
    FuzzTarget();
    virtual ~FuzzTarget() = default;
    virtual void take(const QByteArray& input) = 0;

    int longest = 1; // s of the processor for one input; more where it takes several actions of the operator

protected:
    static void empty(const QString& folder);
    static std::unique_ptr<Gui> console(); // with an empty journal
    // What stands in a file that the console has saved. A nought may lose its sign.
    QByteArray saved(const QString& path) const { return m_site.read(path).replace(" -0.", " 0."); }

    SiteFixture m_site;
};

using FuzzMake = std::unique_ptr<FuzzTarget> (*)();
std::map<QByteArray, FuzzMake>& fuzzTargets(); // by the names of the folders of kept inputs

template <class Target>
struct FuzzName
{
    explicit FuzzName(const char* name)
    {
        fuzzTargets()[name] = [] { return std::unique_ptr<FuzzTarget>(new Target); };
    }
};

// For a process that has a QApplication; ends it when there is no target of this name.
std::unique_ptr<FuzzTarget> fuzzTarget(const QByteArray& name);

// Ends the process, with the words, unless `holds`.
void fuzzCheck(bool holds, const char* words);

// Ends the process when the input took more of the processor than it may, or let the memory grow by more
// than 200 MB on its way; under a sanitizer four times as much.
void fuzzTake(FuzzTarget& target, const QByteArray& input);

// Repeats a part of the input up to a megabyte: finds what takes the square of the length.
QByteArray fuzzSwollen(QByteArray input, std::mt19937& random);

// One change: the end is cut off, or a piece goes or becomes one of another input, an odd word or a byte; the
// odd word takes the place of a number, if one follows.
QByteArray fuzzMangled(QByteArray input, const QByteArray& other, std::mt19937& random);
