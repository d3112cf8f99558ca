#include <odfmodel/package/user_data.h>

#include "platform/modules.h"
#include "platform/settings_store.h"

#include <odfmodel/package/module_loader.h>

namespace SDPackage {

namespace {

namespace platform = ODF::platform;

constexpr const char* kSerializerKey = "Software\\TUL\\Shared\\Serializer";
constexpr const char* kSerializerModule = "module";

/// Loads the module at a path, or by its bare name: from the Common path first, then as the system finds it.
platform::Module LoadByName(const std::string& name) {
    platform::Module module;
    if (name.find('/') == std::string::npos) {
        ModuleLoader loader;
        loader.SetMessageFunction([](const unsigned short*, const unsigned short*) {});
        CTulStringW folder;
        if (loader.FindCommonPath(folder) && module.load(platform::Path(folder) / platform::Path(name)))
            return module;
    }
    module.load(name);
    return module;
}

template<typename Function>
bool Bind(const platform::Module& module, const char* name, Function& entry) {
    entry = module.function<Function>(name);
    return entry != nullptr;
}

} // namespace

UserDataModule::~UserDataModule() {
    Unload();
}

int UserDataModule::Load() {
    if (module) return 1;
    const auto name = platform::ReadSetting(platform::SettingsRoot::User, kSerializerKey, kSerializerModule);
    if (!name || name->empty()) return 0;
    platform::Module loaded = LoadByName(*name);
    if (!loaded.isLoaded()) return 0;
    if (!Bind(loaded, "Open", Open) || !Bind(loaded, "Create", Create) || !Bind(loaded, "Write", Write) ||
        !Bind(loaded, "Close", Close) || !Bind(loaded, "GetUserPrefixName", GetUserPrefixName) ||
        !Bind(loaded, "GetUserStreamName", GetUserStreamName)) {
        Unload();
        return 0;
    }
    module = loaded.release();
    return 1;
}

void UserDataModule::Unload() noexcept {
    platform::Module(module).unload();
    module = nullptr;
    Open = nullptr;
    Create = nullptr;
    Write = nullptr;
    Close = nullptr;
    GetUserPrefixName = nullptr;
    GetUserStreamName = nullptr;
}

} // namespace SDPackage
