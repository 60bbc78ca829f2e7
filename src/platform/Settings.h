#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class OwnersStore;

// The per-user store of texts under a section and a key: an INI file that its owner alone can read, written out after
// each change. A file that is missing or damaged reads as empty, one that cannot be written keeps its old values.
class Settings {
public:
    explicit Settings(const std::string& fileName);
    ~Settings();

    // Where the user's settings lie, such as ~/.config/Tamarack/Tamarack.ini.
    static std::string UserFileName();

    // Empty if there is none.
    std::string GetSetting(std::string_view section, std::string_view key) const;
    void SaveSetting(std::string_view section, std::string_view key, std::string_view value);
    void DeleteSetting(std::string_view section, std::string_view key);

    // The keys of a section, in the store's order.
    std::vector<std::string> GetAllSettings(std::string_view section) const;

private:
    std::unique_ptr<OwnersStore> store;
};
