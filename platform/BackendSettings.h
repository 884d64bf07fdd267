#ifndef OMTREE_PLATFORM_BACKENDSETTINGS_H
#define OMTREE_PLATFORM_BACKENDSETTINGS_H

#include "platform/Export.h"

#include <string>

/// The engine's settings as a table receives them. A plain value record.
class QUORIOCV_API BackendSettings {
public:
    /// 2,000,000,000 cells, fast tables on, locale "en_US.UTF-8", Unicode on.
    BackendSettings();

    /// Cell limit of a table: with a limit of M the first M + 1 stores succeed.
    long getMaxCells() const { return _maxCells; }
    void setMaxCells(long cells) { _maxCells = cells; }

    /// Whether a table makes trackers and attaches them to its texts.
    bool getFastTables() const { return _fastTables; }
    void setFastTables(bool fast) { _fastTables = fast; }

    /// Locale name, with the code page after the dot.
    std::string getLocale() const { return _locale; }
    void setLocale(std::string locale);

    /// Whether the data is Unicode.
    bool getUnicode() const { return _unicode; }
    void setUnicode(bool unicode) { _unicode = unicode; }

private:
    long _maxCells = 2000000000L;
    bool _fastTables = true;
    bool _unicode = true;
    std::string _locale = "en_US.UTF-8";
};

#endif
