#include "brightness/restore_brightness.h"

#include "brightness/display_targets.h"

std::vector<std::wstring> RestoreBrightness(SavedBrightness* saved) {
    SavedBrightness attempted;
    SavedBrightness refused;
    std::vector<std::wstring> restored;
    DisplayTargetList list;
    EnumerateTargets(&list);
    for (const DisplayTarget& target : list) {
        attempted.insert(saved->extract(target.name));
        const auto entry = attempted.find(target.name);  // two targets may have the same name
        if (entry == attempted.end()) continue;
        if (SetTargetBrightness(target, entry->second)) {
            restored.push_back(entry->first);
        } else {
            refused.insert(*entry);
        }
    }
    saved->merge(refused);
    return restored;
}
