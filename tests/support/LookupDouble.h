// A lookup in front of the in-process runtime that hides and replaces rows and records what is
// asked.
#pragma once

#include "api/BIBRuntime.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace support {

// At most one lives at a time; Lookup goes through it. Rows are named "Interface.Operation".
class LookupDouble {
public:
    LookupDouble() { fCurrent = this; }
    ~LookupDouble() { fCurrent = nullptr; }
    LookupDouble(LookupDouble const&) = delete;
    LookupDouble& operator=(LookupDouble const&) = delete;

    static void* Lookup(char const* interfaceName, char const* procName, char const* procType) {
        std::string const row = std::string(interfaceName) + "." + procName;
        fCurrent->fAsked.push_back(row);
        if (fCurrent->fHidden.count(row) != 0) {
            return nullptr;
        }
        auto const replaced = fCurrent->fReplaced.find(row);
        return replaced != fCurrent->fReplaced.end()
                   ? replaced->second
                   : BIBRuntimeLookup(interfaceName, procName, procType);
    }

    void Hide(std::string const& row) { fHidden.insert(row); }
    void Show(std::string const& row) { fHidden.erase(row); }

    template <class Proc>
    void Replace(std::string const& row, Proc* proc) {
        fReplaced[row] = reinterpret_cast<void*>(proc);
    }

    std::vector<std::string> fAsked;

private:
    std::set<std::string> fHidden;
    std::map<std::string, void*> fReplaced;

    static inline LookupDouble* fCurrent = nullptr;
};

} // namespace support
