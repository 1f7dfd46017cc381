// The role store below the device's root folder, and what the bus hears of it.
#include <dlfcn.h>
#include <sys/stat.h>

#include <algorithm>

#include "roles/families.h"
#include "roles/registration.h"
#include "roles/role_file.h"
#include "transcript.h"

namespace fs = std::filesystem;

namespace {

// Every folder below /var that this program asks for, in order.
std::vector<std::string>& createdFolders() {
    static auto& folders = *new std::vector<std::string>;
    return folders;
}

}  // namespace

// Stands in front of the device's own.
extern "C" __attribute__((visibility("default"))) int mkdir(const char* path,
                                                            mode_t mode) noexcept {
    using Function = int (*)(const char*, mode_t);
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "mkdir"));
    if (std::string(path).rfind("/var", 0) == 0) {
        createdFolders().push_back(path);
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

    // Those since the last look.
    long rescans() {
        const auto& journal = device.journal();
        const long all = std::count_if(journal.begin(), journal.end(), [](const auto& line) {
            return line.find("\"what\":\"rescan\"") != std::string::npos;
        });
        return all - std::exchange(m_rescansSeen, all);
    }

private:
    long m_rescansSeen = 0;
};

TEST_F(RolesTest, ExpandsATemplate) {
    const std::string before(100000, 'x');
    const struct {
        std::string text, id, exePath, expected;
    } cases[] = {
        {"<XXXIDXXX XXXIDXXX>\n", "sampleapp", "", "<sampleapp sampleapp>\n\n"},
        {"<XXXEXEPATHXXX>", "", kExecutable, "</apps/sampleapp/bin/puzzle>\n"},
        {"", "id", "path", "\n"},
        {"\n", "id", "path", "\n\n"},
        {"XXXIDXXX\n\nXXXEXEPATHXXX XXXIDXXX", "id", "path", "id\n\npath id\n"},
        {"a\0XXXIDXXX\0\r\nb\r"s, "id", "", "a\0id\0\r\nb\r\n"s},
        {before + "XXXIDXXX\nXXXIDXXX", "id", "", before + "id\nid\n"},
        {"xxxidxxx XXXID\nXXX XXXIDXX", "id", "", "xxxidxxx XXXID\nXXX XXXIDXX\n"},
        {"<XXXIDXXX>", "", "", "<>\n"},
        // An id that makes a path, but no path that makes an id.
        {"XXXIDXXX XXXEXEPATHXXX", "XXXEXEPATHXXX", "XXXIDXXX", "XXXIDXXX XXXIDXXX\n"},
        {"XXXIDXXX", "XXXEXEPATHXXX XXXEXEPATH", "XXX", "XXX XXXEXEPATH\n"},
        // Values that hold their own placeholder.
        {"XXXIDXXXXXXIDXXX", "aXXXIDXXXb", "", "aXXXIDXXXbaXXXIDXXXb\n"},
        {"XXXEXEPATHXXX XXXEXEPATHXXX", "", "/XXXEXEPATHXXX", "/XXXEXEPATHXXX /XXXEXEPATHXXX\n"},
        // Insertions that complete a placeholder with what follows, precedes and surrounds them.
        {"XXXIDXXXIDXXX", "aXXX", "", "aaXXX\n"},
        {"XXXIXXXIDXXX", "DXXX", "", "DXXX\n"},
        {"<XXXXXXIDXXXIDXXX>", "", "", "<>\n"},
        {"XXXIXXXIDXXXXXIDXXX", "DX", "", "DXIDXXX\n"},
    };
    tav::ensureRoleDirectories();
    for (const auto& one : cases) {
        write(kTemplate, one.text);
        roleGenerate(kTemplate, kRole, one.id, one.exePath);
        EXPECT_EQ(read(kRole), one.expected);
        EXPECT_EQ(rescans(), 1);
        fs::remove(path(kRole));
    }

    // A template that is missing leaves an empty file, one that cannot be read none.
    for (const char* source : {"/usr/vire/ks2/templates", "/usr/vire/ks2/templates/missing"}) {
        roleGenerate(source, kRole, "id", "path");
        EXPECT_EQ(read(kRole), source == "/usr/vire/ks2/templates"s ? "(none)" : "") << source;
        EXPECT_EQ(rescans(), 1) << source;
    }
    fs::remove(path(kRole));

    // Where every insertion completes another one, it ends all the same.
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
    const std::string store = "/var/vire/ks2/roles";
    const std::string pub = store + "/pub", prv = store + "/prv";
    const struct {
        std::vector<std::string> present;
        std::string blocked;  // a file where a folder should be
        std::vector<std::string> created;
    } cases[] = {
        {{}, "", {"/var", "/var/vire", "/var/vire/ks2", store, pub, prv}},
        {{store}, "", {pub, prv}},
        {{pub}, "", {prv}},
        {{prv}, "", {pub}},
        {{pub, prv}, "", {}},
        {{store}, pub, {prv}},
        {{"/var/vire"}, "/var/vire/ks2", {}},
    };
    const mode_t mask = umask(0);
    for (const auto& one : cases) {
        fs::remove_all(path("/var"));
        for (const std::string& folder : one.present) {
            fs::create_directories(path(folder));
        }
        if (!one.blocked.empty()) {
            write(one.blocked, "");
        }
        createdFolders().clear();
        tav::ensureRoleDirectories();
        EXPECT_EQ(createdFolders(), one.created);
        for (const std::string& folder : one.present) {
            EXPECT_EQ(fs::status(path(folder)).permissions(), fs::perms::all) << folder;
        }
        for (const std::string& folder : one.created) {
            EXPECT_EQ(fs::status(path(folder)).permissions(), fs::perms::owner_all) << folder;
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
        SDL_ClearError();
        std::string result = std::to_string(registerRoleFile());
        const std::vector<std::string> lines = trace();
        EXPECT_EQ(lines.front(), "tav_f registerRoleFile --");
        EXPECT_STREQ(SDL_GetError(), "");
        note("");
        result += fs::exists(path("/var/vire/ks2/roles")) ? " with folders " : " ";
        result += roles(id) + (lines.back().starts_with("tav_1") ? lines.back() : "");
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
