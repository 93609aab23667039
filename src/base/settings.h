#pragma once

#include <QSettings>

// The settings file of this site, which every panel keeps its own keys in. Anyone may have edited it: a value
// is checked before it is used.
class Settings : public QSettings
{
public:
    Settings();

    float number(const char* key, float usual) const; // `usual` also where infinity or no number stands
    int columnWidth(const char* key,
                    int usual) const; // px; `usual` for 0 and less: that column would be gone
};
