#include "base/TUTeller.h"

#include <algorithm>
#include <vector>

struct TUTeller::Impl {
    std::vector<TUListener *> listeners;  // in phoning order, each once
};

struct TUListener::Impl {
    std::vector<TUTeller *> tellers;  // each once
};

TUTeller::TUTeller() : d_(std::make_unique<Impl>()) {}

TUTeller::~TUTeller()
{
    // Careful: tellerDestroyed may hang up or phone others; work on a copy and close each line
    // before telling.
    std::vector<TUListener *> const listeners = d_->listeners;
    d_->listeners.clear();
    for (TUListener *listener : listeners) {
        listener->forget(this);
        listener->tellerDestroyed(this);
    }
}

void TUTeller::tell()
{
    std::vector<TUListener *> const round = d_->listeners;
    for (TUListener *listener : round) {
        auto const &now = d_->listeners;
        if (std::find(now.begin(), now.end(), listener) != now.end())
            listener->callBack(this);
    }
}

int TUTeller::listenerCount() const { return static_cast<int>(d_->listeners.size()); }

void TUTeller::add(TUListener *listener)
{
    if (std::find(d_->listeners.begin(), d_->listeners.end(), listener) == d_->listeners.end())
        d_->listeners.push_back(listener);
}

void TUTeller::remove(TUListener *listener)
{
    d_->listeners.erase(std::remove(d_->listeners.begin(), d_->listeners.end(), listener),
                        d_->listeners.end());
}

TUListener::TUListener() : d_(std::make_unique<Impl>()) {}

TUListener::~TUListener() { hangUpAll(); }

void TUListener::phone(TUTeller *teller)
{
    if (!teller || isListeningTo(teller))
        return;
    d_->tellers.push_back(teller);
    teller->add(this);
}

void TUListener::hangUp(TUTeller *teller)
{
    if (!teller || !isListeningTo(teller))
        return;
    forget(teller);
    teller->remove(this);
}

void TUListener::hangUpAll()
{
    std::vector<TUTeller *> const tellers = d_->tellers;
    for (TUTeller *teller : tellers)
        hangUp(teller);
}

bool TUListener::isListeningTo(TUTeller const *teller) const
{
    return std::find(d_->tellers.begin(), d_->tellers.end(), teller) != d_->tellers.end();
}

void TUListener::tellerDestroyed(TUTeller *) {}

void TUListener::forget(TUTeller *teller)
{
    d_->tellers.erase(std::remove(d_->tellers.begin(), d_->tellers.end(), teller), d_->tellers.end());
}
