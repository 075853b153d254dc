#include "netconf/card.h"

namespace tarnd::netconf {

void end_session(Card& card, SessionId id) {
  if (card.running_lock == id) card.running_lock.reset();
  if (card.candidate_lock == id) {
    card.candidate_lock.reset();
    card.candidate.discard();
  }
  card.sessions.erase(id);
}

}  // namespace tarnd::netconf
