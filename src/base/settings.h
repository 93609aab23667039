#pragma once

#include <QSettings>

// The settings file of this site, which every panel keeps its own keys in. Anyone may have edited it: a value
// is checked before it is used.
class Settings : public QSettings
{
public:
    Settings();

    // `usual` where there is nothing, "nan" or "inf"; any other text that is no number counts as 0.
    float number(const char* key, float usual) const;

    // In px; `usual` for what is not above 0: a column that narrow could never be widened again.
    int columnWidth(const char* key, int usual) const;
};
