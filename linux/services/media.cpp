// The media players.
#include "linux/bus/connection.h"
#include "linux/services/services.h"

namespace tavlinux {
namespace {

constexpr char kPlayers[] = "org.mpris.MediaPlayer2.";
constexpr char kPlayerPath[] = "/org/mpris/MediaPlayer2";
constexpr char kPlayer[] = "org.mpris.MediaPlayer2.Player";

void pauseAll(GVariant* names) {
    g_autoptr(GVariantIter) iterator = nullptr;
    const char* name = nullptr;
    g_variant_get(names, "(as)", &iterator);
    while (g_variant_iter_next(iterator, "&s", &name) != FALSE) {
        if (g_str_has_prefix(name, kPlayers) != FALSE) {
            call({Bus::Session, name, kPlayerPath, kPlayer, "Pause"}, nullptr, nullptr);
        }
    }
}

}  // namespace

Dispatched pauseMedia(const simdjson::dom::object&, const Answer& answer) {
    const bool isDispatched = call({Bus::Session, kBusService, kBusPath, kBusService, "ListNames"},
                                   nullptr, [answer](GVariant* names, const GError* problem) {
                                       if (isOfType(names, "(as)")) {
                                           pauseAll(names);
                                       }
                                       answer(names != nullptr ? kDone : failure(problem));
                                   });
    return isDispatched ? Dispatched(Stop()) : std::nullopt;
}

}  // namespace tavlinux
