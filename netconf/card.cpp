#include "netconf/card.h"

#include "netconf/confirmed_commit.h"

namespace tarnd::netconf {

void end_session(Card& card, SessionId id) {
  end_pending_of(card, id);
  if (card.running_lock == id) card.running_lock.reset();
  if (card.candidate_lock == id) {
    card.candidate_lock.reset();
    card.candidate.discard();
  }
  card.sessions.erase(id);
}

}  // namespace tarnd::netconf
