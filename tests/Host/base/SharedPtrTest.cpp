#include "base/UT_SharedPtr.h"

#include <gtest/gtest.h>

namespace {

// A host object of no particular kind.
class Shared : public UT_ShareBase {};

TEST(SharedWeakPtr, ReadsNullAfterItsObjectIsGone)
{
    UT_SharedPtr<Shared> module = UT_MakeShared<Shared>();
    UT_SharedWeakPtr<Shared> weak(module.get());
    UT_SharedWeakPtr<Shared> copy = weak;
    EXPECT_EQ(weak.get(), module.get());
    EXPECT_EQ(copy.get(), module.get());

    module.reset();
    EXPECT_EQ(weak.get(), nullptr);
    EXPECT_EQ(copy.get(), nullptr);
    EXPECT_TRUE(weak.expired());
    EXPECT_FALSE(weak);
}

TEST(SharedWeakPtr, IdentityIsKeptAfterExpiryAndEmptyReferencesAreTheSame)
{
    UT_SharedPtr<Shared> a = UT_MakeShared<Shared>();
    UT_SharedPtr<Shared> b = UT_MakeShared<Shared>();
    UT_SharedWeakPtr<Shared> wa(a.get()), wa2(a), wb(b.get());
    EXPECT_TRUE(wa.isSameReference(wa2));
    EXPECT_FALSE(wa.isSameReference(wb));

    a.reset();
    EXPECT_TRUE(wa.isSameReference(wa2));
    EXPECT_FALSE(wa.isSameReference(UT_SharedWeakPtr<Shared>()));
    EXPECT_TRUE(UT_SharedWeakPtr<Shared>().isSameReference(UT_SharedWeakPtr<Shared>()));
}

TEST(SharedWeakPtr, AnObjectWithoutOwnerOrANullGivesAnEmptyReference)
{
    Shared onStack;
    EXPECT_EQ(UT_SharedWeakPtr<Shared>(&onStack).get(), nullptr);
    EXPECT_EQ(UT_SharedWeakPtr<Shared>(static_cast<Shared *>(nullptr)).get(), nullptr);
}

TEST(SharedWeakPtr, ACopiedObjectIsANewIdentity)
{
    UT_SharedPtr<Shared> a = UT_MakeShared<Shared>();
    UT_SharedPtr<Shared> b = UT_MakeShared<Shared>(*a);
    EXPECT_FALSE(UT_SharedWeakPtr<Shared>(a.get()).isSameReference(UT_SharedWeakPtr<Shared>(b.get())));
}

} // namespace
