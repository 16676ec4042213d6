// Shared and weak references to host objects.
//
// Host objects that may be referred to weakly (nodes and modules) derive from UT_ShareBase and are
// owned through UT_SharedPtr. A UT_SharedWeakPtr refers to such an object without owning it and
// reads null once the last owner has let it go; copies of a weak pointer share one count.
//
// Careful: UT_SharedWeakPtr::get() hands out a plain pointer that stays valid only while an owner
// holds the object. Everything runs on the host's main thread, so a pointer read and used within
// one call is safe; one kept across calls is not: keep the weak pointer instead.
#pragma once

#include <memory>
#include <utility>

// Base of the host objects that can be shared and weakly referred to.
class UT_ShareBase : public std::enable_shared_from_this<UT_ShareBase> {
public:
    virtual ~UT_ShareBase() = default;

protected:
    UT_ShareBase() = default;
    // A copy is a new object with no owner of its own: the count is not copied.
    UT_ShareBase(UT_ShareBase const &) : std::enable_shared_from_this<UT_ShareBase>() {}
    UT_ShareBase &operator=(UT_ShareBase const &) { return *this; }
};

// Counted reference to a host object.
template <class T>
using UT_SharedPtr = std::shared_ptr<T>;

template <class T, class... Args>
UT_SharedPtr<T> UT_MakeShared(Args &&...args)
{
    return std::make_shared<T>(std::forward<Args>(args)...);
}

// Weak reference to a host object derived from UT_ShareBase.
template <class T>
class UT_SharedWeakPtr {
public:
    UT_SharedWeakPtr() = default;
    UT_SharedWeakPtr(UT_SharedPtr<T> const &object) : ref_(object) {}
    // Refers to `object`, which must be held by a UT_SharedPtr. A null object, or one that no
    // UT_SharedPtr holds, gives an empty reference.
    explicit UT_SharedWeakPtr(T *object)
    {
        if (!object)
            return;
        if (std::shared_ptr<UT_ShareBase> owner = object->weak_from_this().lock())
            ref_ = std::shared_ptr<T>(std::move(owner), object);  // aliasing: owner's count, object's address
    }

    // The object, or null when the reference is empty or the object is gone.
    T *get() const { return ref_.lock().get(); }
    T *operator->() const { return get(); }
    explicit operator bool() const { return get() != nullptr; }
    bool expired() const { return ref_.expired(); }
    void reset() { ref_.reset(); }

    // True when both refer to the same object by identity, whether or not it still lives. Two
    // empty references are the same.
    bool isSameReference(UT_SharedWeakPtr const &o) const
    {
        return !ref_.owner_before(o.ref_) && !o.ref_.owner_before(ref_);
    }

private:
    std::weak_ptr<T> ref_;
};
