// The role store below the device's root folder, and what the bus hears of it.
#include <dlfcn.h>
#include <sys/stat.h>

#include <algorithm>

#include "roles/families.h"
#include "roles/registration.h"
#include "roles/role_file.h"
#include "transcript.h"

namespace fs = std::filesystem;

// Every folder below /var that this program asks for, in order.
static std::vector<std::string> g_createdFolders;

// Interposed before the device's function.
extern "C" int mkdir(const char* path, mode_t mode) noexcept {
    static const auto next = reinterpret_cast<decltype(&mkdir)>(dlsym(RTLD_NEXT, "mkdir"));
    if (std::string(path).rfind("/var", 0) == 0) {
        g_createdFolders.push_back(path);
    }
    return next(path, mode);
}

namespace {

using namespace std::string_literals;

constexpr char kTemplate[] = "/usr/vire/ks2/templates/one";
constexpr char kRole[] = "/var/vire/ks2/roles/pub/one.json";
constexpr char kExecutable[] = "/apps/sampleapp/bin/puzzle";
const std::string kKobPublic = "kob pub sampleapp /apps/sampleapp/bin/puzzle\n";
const std::string kKobPrivate = "kob prv sampleapp /apps/sampleapp/bin/puzzle\n";

class RolesTest : public tavtest::TranscriptTest {
protected:
    void SetUp() override {
        TranscriptTest::SetUp();
        startWithTemplates({});
    }

    void startWithTemplates(tavsim::Profile profile) {
        profile.templates = {{"KOB.pub", "kob pub XXXIDXXX XXXEXEPATHXXX"},
                             {"KOB.prv", "kob prv XXXIDXXX XXXEXEPATHXXX"},
                             {"Vantor.pub", "vantor pub XXXIDXXX XXXEXEPATHXXX"},
                             {"Vantor.prv", "vantor prv XXXIDXXX XXXEXEPATHXXX"}};
        startDevice(profile);
        m_rescansSeen = 0;
    }

    // The public and the private role file, one after the other.
    std::string roles(const std::string& id) const {
        return read("/var/vire/ks2/roles/pub/" + id + ".json") +
               read("/var/vire/ks2/roles/prv/" + id + ".json");
    }

    // The number of rescans since the last call.
    long rescans() {
        const long all = std::ranges::count_if(device.journal(), [](const auto& line) {
            return line.find("\"what\":\"rescan\"") != std::string::npos;
        });
        return all - std::exchange(m_rescansSeen, all);
    }

private:
    long m_rescansSeen = 0;
};

TEST_F(RolesTest, ExpandsATemplate) {
    const std::string before(100000, 'x');
    // The template, the id, the path, and the resulting role file.
    const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
        {"", "id", "path", "\n"},
        {"\n", "id", "path", "\n\n"},
        {"<XXXIDXXX XXXIDXXX>\n\nXXXEXEPATHXXX XXXIDXXX", "id", "/p", "<id id>\n\n/p id\n"},
        {"a\0XXXIDXXX\0\r\nxxxidxxx XXXID\nXXX XXXIDXX\r"s, "id", "",
         "a\0id\0\r\nxxxidxxx XXXID\nXXX XXXIDXX\r\n"s},
        {before + "XXXIDXXX\nXXXIDXXX", "id", "", before + "id\nid\n"},
        // A placeholder of the path in the id is replaced, one of the id in the path is not.
        {"XXXIDXXX XXXEXEPATHXXX", "XXXEXEPATHXXX", "XXXIDXXX", "XXXIDXXX XXXIDXXX\n"},
        {"XXXIDXXX", "XXXEXEPATHXXX XXXEXEPATH", "XXX", "XXX XXXEXEPATH\n"},
        // A value's own placeholder in it is not replaced again.
        {"XXXIDXXXXXXIDXXX", "aXXXIDXXXb", "", "aXXXIDXXXbaXXXIDXXXb\n"},
        {"XXXEXEPATHXXX XXXEXEPATHXXX", "", "/XXXEXEPATHXXX", "/XXXEXEPATHXXX /XXXEXEPATHXXX\n"},
        // Insertions that complete a placeholder with what follows, precedes and surrounds them.
        {"XXXIDXXXIDXXX", "aXXX", "", "aaXXX\n"},
        {"XXXIXXXIDXXX", "DXXX", "", "DXXX\n"},
        {"<XXXXXXIDXXXIDXXX>\n<XXXIDXXX>", "", "", "<>\n<>\n"},
        {"XXXIXXXIDXXXXXIDXXX", "DX", "", "DXIDXXX\n"},
    };
    tav::ensureRoleDirectories();
    for (const auto& [text, id, exePath, expected] : cases) {
        write(kTemplate, text);
        roleGenerate(kTemplate, kRole, id, exePath);
        EXPECT_EQ(read(kRole), expected);
        EXPECT_EQ(rescans(), 1);
        fs::remove(path(kRole));
    }

    // A missing template leaves an empty file; one that cannot be read leaves none.
    for (const char* source : {"/usr/vire/ks2/templates", "/usr/vire/ks2/templates/missing"}) {
        roleGenerate(source, kRole, "id", "path");
        EXPECT_EQ(read(kRole), source == "/usr/vire/ks2/templates"s ? "(none)" : "") << source;
        EXPECT_EQ(rescans(), 1) << source;
    }
    fs::remove(path(kRole));

    // It ends even where every insertion completes another placeholder.
    write(kTemplate, "XXXIDXXXX\nnext XXXIDXXX");
    roleGenerate(kTemplate, kRole, "XXIDXXXXXXIDXX", "");
    EXPECT_LT(read(kRole).size(), 1000u);
    EXPECT_TRUE(read(kRole).ends_with("\nnext XXIDXXXXXXIDXX\n")) << read(kRole);
}

TEST_F(RolesTest, WhatIsThereStays) {
    write(kTemplate, "XXXIDXXX");
    for (const char* content : {"", "old"}) {
        write(kRole, content);
        const auto past = fs::last_write_time(path(kRole)) - std::chrono::hours(1);
        fs::last_write_time(path(kRole), past);
        roleGenerate(kTemplate, kRole, "id", "path");
        EXPECT_EQ(read(kRole), content);
        EXPECT_EQ(fs::last_write_time(path(kRole)), past);
    }
    roleGenerate(kTemplate, "/var/vire/ks2/roles/pub", "id", "path");
    EXPECT_TRUE(fs::is_directory(path("/var/vire/ks2/roles/pub")));
    EXPECT_EQ(rescans(), 0);
}

TEST_F(RolesTest, CreatesTheFoldersThatAreMissing) {
    const std::string store = "/var/vire/ks2/roles", pub = store + "/pub", prv = store + "/prv";
    using Folders = std::vector<std::string>;
    // The existing folders, a file in the place of a folder, and the folders that are created.
    const std::tuple<Folders, std::string, Folders> cases[] = {
        {{}, "", {"/var", "/var/vire", "/var/vire/ks2", store, pub, prv}},
        {{store}, "", {pub, prv}},
        {{pub}, "", {prv}},
        {{prv}, "", {pub}},
        {{pub, prv}, "", {}},
        {{store}, pub, {prv}},
        {{"/var/vire"}, "/var/vire/ks2", {}},
    };
    const mode_t mask = umask(0);
    for (const auto& [present, blocked, created] : cases) {
        fs::remove_all(path("/var"));
        for (const std::string& folder : present) {
            fs::create_directories(path(folder));
        }
        blocked.empty() ? void() : write(blocked, "");
        g_createdFolders.clear();
        tav::ensureRoleDirectories();
        EXPECT_EQ(g_createdFolders, created);
        for (const auto& [folders, permissions] :
             {std::pair(present, fs::perms::all), {created, fs::perms::owner_all}}) {
            for (const std::string& folder : folders) {
                EXPECT_EQ(fs::status(path(folder)).permissions(), permissions) << folder;
            }
        }
    }
    umask(mask);
}

TEST_F(RolesTest, TheBusRescansAfterEachCompleteFile) {
    write("/usr/bin/ks-control", "#!/bin/sh\ncd '" + device.root() + R"(' || exit
cat /dev/null var/vire/ks2/roles/p*/*.json >>runs
echo "$@" >>runs
)");
    fs::permissions(path("/usr/bin/ks-control"), fs::perms::owner_all);
    kobGenerateRole("sampleapp", kExecutable);
    EXPECT_EQ(read("/runs"),
              kKobPublic + "scan-services\n" + kKobPrivate + kKobPublic + "scan-services\n");
}

TEST_F(RolesTest, TheFirstFamilyDecidesForEachSide) {
    const std::string vantorPublic = "vantor pub sampleapp js\n";
    vantorGenerateRole("sampleapp");
    EXPECT_EQ(roles("sampleapp"), vantorPublic + "vantor prv sampleapp js\n");
    EXPECT_EQ(rescans(), 2);
    fs::remove(path("/var/vire/ks2/roles/prv/sampleapp.json"));
    kobGenerateRole("sampleapp", kExecutable);
    EXPECT_EQ(roles("sampleapp"), vantorPublic + kKobPrivate);
    EXPECT_EQ(rescans(), 1);
}

TEST_F(RolesTest, ASideThatCannotBeWrittenIsTriedAgain) {
    write("/var/vire/ks2/roles/pub", "a file");
    for (const long expected : {2, 1}) {
        kobGenerateRole("sampleapp", kExecutable);
        EXPECT_EQ(rescans(), expected);
        EXPECT_EQ(roles("sampleapp"), "(none)" + kKobPrivate);
    }
}

TEST_F(RolesTest, AnIdIsAPlainFileName) {
    for (const char* id : {"/", "../../sampleapp"}) {
        kobGenerateRole(id, kExecutable);
        vantorGenerateRole(id);
    }
    EXPECT_FALSE(fs::exists(path("/var/vire/ks2/roles")));
    EXPECT_EQ(rescans(), 0);
}

TEST_F(RolesTest, RegistersTheApplicationOfTheRootUser) {
    const auto start = [&](bool root, const std::string& executable,
                           const std::map<std::string, std::string>& appinfo, const char* id) {
        tavsim::Profile profile;
        profile.root = root;
        profile.executable = executable;
        profile.appinfo = appinfo;
        startWithTemplates(profile);
        const int code = registerRoleFile();
        const std::vector<std::string> lines = trace();
        EXPECT_EQ(lines.front(), "tav_f registerRoleFile --");
        EXPECT_STREQ(SDL_GetError(), "");
        note("");
        std::string result =
            join(code, fs::exists(path("/var/vire/ks2/roles")) ? " with folders " : " ", roles(id),
                 lines.back().starts_with("tav_1") ? lines.back() : "");
        std::replace(result.begin(), result.end(), '\n', ';');
        return result;
    };
    CALL(start(true, kExecutable, {{"id", "sampleapp"}}, "sampleapp"));
    CALL(start(true, kExecutable, {{"id", ""}}, ""));
    CALL(start(true, kExecutable, {}, "puzzle"));
    CALL(start(true, "/p", {}, "p"));
    CALL(start(true, kExecutable, {{"id", std::string(4096, 'a')}}, "puzzle"));
    CALL(start(false, kExecutable, {{"id", "sampleapp"}}, "sampleapp"));
    CALL(start(true, "", {{"id", "sampleapp"}}, "sampleapp"));
    CALL(start(true, "/apps/", {}, ""));
    CALL(start(true, "puzzle", {}, "puzzle"));
}

}  // namespace
