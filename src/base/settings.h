#pragma once

#include <QSettings>

// The settings file of this site, which every panel keeps its own keys in. Anyone may have edited it: a value
// is checked by whoever reads it.
class Settings : public QSettings
{
public:
    Settings();
};
