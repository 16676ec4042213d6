// The host's observer pair: a teller tells its listeners that it changed; a listener phones the
// tellers it wants to hear from and hangs up when it no longer does.
//
// Either side may go first: a teller that dies tells each listener through tellerDestroyed, and a
// listener that dies hangs up on every teller, so neither keeps a dangling pointer. A listener may
// hang up, or phone another teller, from inside its callBack.
#pragma once

#include <memory>

class TUListener;

class TUTeller {
public:
    TUTeller();
    virtual ~TUTeller();  // tells every listener tellerDestroyed, then forgets them
    TUTeller(TUTeller const &) = delete;
    TUTeller &operator=(TUTeller const &) = delete;

    // Calls callBack(this) on each listener, in the order they phoned. Listeners that hang up
    // during the round are skipped; those that phone during it are called from the next tell.
    void tell();
    int listenerCount() const;

private:
    friend class TUListener;
    void add(TUListener *listener);
    void remove(TUListener *listener);

    struct Impl;
    std::unique_ptr<Impl> d_;
};

class TUListener {
public:
    TUListener();
    virtual ~TUListener();  // hangs up on every teller
    TUListener(TUListener const &) = delete;
    TUListener &operator=(TUListener const &) = delete;

    // Starts listening to `teller`; phoning twice is the same as once. Null is ignored.
    void phone(TUTeller *teller);
    void hangUp(TUTeller *teller);
    void hangUpAll();
    bool isListeningTo(TUTeller const *teller) const;

    // Called by tell().
    virtual void callBack(TUTeller *teller) = 0;
    // Called when a teller this listener phoned is destroyed; the line is already closed.
    virtual void tellerDestroyed(TUTeller *teller);

private:
    friend class TUTeller;
    void forget(TUTeller *teller);

    struct Impl;
    std::unique_ptr<Impl> d_;
};
