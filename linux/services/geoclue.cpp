#include "linux/services/geoclue.h"

#include <utility>

#include "linux/application/application.h"

namespace tavlinux {
namespace {

constexpr char kManagerPath[] = "/org/freedesktop/GeoClue2/Manager";
constexpr char kManager[] = "org.freedesktop.GeoClue2.Manager";
constexpr char kClient[] = "org.freedesktop.GeoClue2.Client";
constexpr char kGeoClueLocation[] = "org.freedesktop.GeoClue2.Location";
constexpr guint32 kExact = 8;

Method ofManager(const char* name) {
    return {Bus::System, kGeoClue, kManagerPath, kManager, name};
}

bool isBusGone(const GError* problem) {
    return g_error_matches(problem, G_IO_ERROR, G_IO_ERROR_CLOSED) != FALSE;
}

}  // namespace

GeoClue::GeoClue(PositionListener listener, std::function<void()> onNobody)
    : m_listener(std::move(listener)), m_onNobody(std::move(onNobody)) {
    m_owner =
        watchOwner(Bus::System, kGeoClue, [this](bool hasOwner) { onOwnerChanged(hasOwner); });
    if (!start()) {
        giveUp();
    }
}

GeoClue::~GeoClue() {
    if (!m_client.empty()) {
        call(ofClient(kClient, "Stop"), nullptr, nullptr);
        call(ofManager("DeleteClient"), g_variant_new("(o)", m_client.c_str()), nullptr);
    }
}

// False when the bus is not there.
bool GeoClue::start() {
    m_session = std::make_shared<bool>();
    m_hasWorked = false;
    m_isStarting = true;
    m_isStarting = call(ofManager("GetClient"), nullptr, whileSessionLasts(&GeoClue::takeClient));
    return m_isStarting;
}

void GeoClue::takeClient(GVariant* result, const GError* problem) {
    const char* path = nullptr;
    if (!isOfType(result, "(o)")) {
        failStart(problem);
        return;
    }
    g_variant_get(result, "(&o)", &path);
    useClient(path);
}

void GeoClue::useClient(const char* path) {
    m_client = path;
    m_updates = std::make_unique<Subscription>(
        Subscription::Match{Bus::System, kGeoClue, path, kClient, "LocationUpdated"},
        [this](const char*, GVariant* update) { readLocation(update); });
    setProperty("DesktopId", g_variant_new_string(applicationId().c_str()));
    setProperty("RequestedAccuracyLevel", g_variant_new_uint32(kExact));
    call(ofClient(kClient, "Start"), nullptr, whileSessionLasts(&GeoClue::takeStart));
}

void GeoClue::setProperty(const char* name, GVariant* value) {
    call(ofClient(kProperties, "Set"), g_variant_new("(ssv)", kClient, name, value), nullptr);
}

// cppcheck-suppress constParameter; what takes a call's result has this type
void GeoClue::takeStart(GVariant* result, const GError* problem) {
    m_isStarting = false;
    if (result == nullptr) {
        failStart(problem);
    }
}

void GeoClue::failStart(const GError* problem) {
    m_isStarting = false;
    if (isBusGone(problem)) {
        return;  // as soon as it is back, this starts again
    }
    if (!isNobodyThere(problem)) {
        m_listener.onProblem(problem);
    } else if (!m_isAwaited) {
        giveUp();
    }
}

void GeoClue::readLocation(GVariant* update) {
    if (!isOfType(update, "(oo)")) {
        return;
    }
    const char* path = nullptr;
    g_variant_get_child(update, 1, "&o", &path);
    call({Bus::System, kGeoClue, path, kProperties, "GetAll"},
         g_variant_new("(s)", kGeoClueLocation), whileSessionLasts(&GeoClue::takeLocation));
}

void GeoClue::takeLocation(GVariant* result, const GError*) {
    if (isOfType(result, "(a{sv})")) {
        m_hasWorked = true;
        m_listener.onPosition(positionFrom(childOf(result, 0).get()));
    }
}

// A service that ends before it has worked is not started again: it would crash again and again.
void GeoClue::onOwnerChanged(bool hasOwner) {
    if (hasOwner) {
        if (!m_isStarting && m_client.empty()) {
            start();
        }
        return;
    }
    forgetClient();
    m_isAwaited = true;
    if (m_hasWorked) {
        start();
    }
}

void GeoClue::giveUp() {
    m_owner.reset();
    forgetClient();
    m_onNobody();
}

void GeoClue::forgetClient() {
    m_session.reset();
    m_isStarting = false;
    m_client.clear();
    m_updates.reset();
}

Method GeoClue::ofClient(const char* interface, const char* name) const {
    return {Bus::System, kGeoClue, m_client, interface, name};
}

// Drops a result that arrives after the session has ended.
Result GeoClue::whileSessionLasts(void (GeoClue::*take)(GVariant*, const GError*)) {
    return
        [this, take, session = std::weak_ptr(m_session)](GVariant* result, const GError* problem) {
            if (!session.expired()) {
                (this->*take)(result, problem);
            }
        };
}

}  // namespace tavlinux
