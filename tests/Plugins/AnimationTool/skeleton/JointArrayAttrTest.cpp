// JointArrayAttr on AT_ArrayAttr: making, growing, shrinking and moving elements, who is told,
// the text value and equivalence, and the XML reader that follows the order of the file.
#include "SkeletonTestUtil.h"

#include "skeleton/JointArrayAttr.h"

#include <QStringList>

namespace {

using namespace SkeletonTest;

AT_AttrMeta arrayMeta()
{
    return AT_AttrMeta(QStringLiteral("joints"), QStringLiteral("Joints"));
}

QStringList keywords(JointArrayAttr const &array)
{
    QStringList list;
    for (auto const &element : array.getAttributes())
        list << element->keyword();
    return list;
}

QStringList registeredKeywords(JointArrayAttr const &array)
{
    QStringList list;
    for (AT_Attr *attr : array.registeredAttrs())
        list << attr->keyword();
    return list;
}

// Gives each element a weight equal to its index, so that elements can be told apart.
void markWeights(JointArrayAttr &array)
{
    for (int i = 0; i < array.getSize(); ++i)
        array.getAttribute(i)->weightAttr()->setLocalValue(double(i));
}

TEST(JointArrayAttr, ElementsAreMadeWithTheirMetasAndOnlyTheFirstIsARoot)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointArrayAttr array(module.get(), arrayMeta(), 14);
    EXPECT_EQ(array.getSize(), 14);
    ASSERT_EQ(array.getAttributes().size(), 14u);
    for (int i = 0; i < 14; ++i) {
        EXPECT_EQ(array.getAttribute(i)->keyword(), QStringLiteral("jointattr%1").arg(i));
        EXPECT_EQ(array.getAttribute(i)->isRoot()->localValue(), i == 0);
        EXPECT_EQ(array.getAttribute(i)->node(), module.get());
    }
    EXPECT_EQ(array.getAttribute(12)->keyword(), QLatin1String("jointattr12"));
    EXPECT_EQ(array.getAttribute(14), nullptr);
    EXPECT_EQ(array.getAttribute(-1), nullptr);

    AT_IntAttr const *size = array.size();
    EXPECT_EQ(array.registeredAttr(0), size) << "the size comes first";
    EXPECT_EQ(size->keyword(), QLatin1String("Size"));
    EXPECT_EQ(size->displayName(), QLatin1String("Size"));
    EXPECT_EQ(size->meta().flags(), 9);
    EXPECT_EQ(size->minValue(), 0);
    EXPECT_EQ(array.typeName(), QLatin1String("ARRAY_GROUP"));
    EXPECT_EQ(array.typeKey(), JointArrayAttr::staticTypeKey());

    std::unique_ptr<JointAttr> nothing;
    JointArrayAttr::createJoint(3, array, nullptr);  // a null out pointer asks for nothing
    JointArrayAttr::createJoint(3, array, &nothing);
    ASSERT_NE(nothing, nullptr);
    EXPECT_EQ(nothing->keyword(), QLatin1String("jointattr3"));
}

TEST(JointArrayAttr, PushAndPopKeepTheOtherElementsAndTellOnce)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointArrayAttr array(module.get(), arrayMeta(), 2);
    markWeights(array);
    JointAttr *first = array.getAttribute(0);
    TellCounter counter(&array);

    JointAttr *pushed = array.pushOneJoint();
    ASSERT_NE(pushed, nullptr);
    EXPECT_EQ(counter.tells, 1);
    EXPECT_EQ(array.getSize(), 3);
    EXPECT_EQ(pushed->keyword(), QLatin1String("jointattr2"));
    EXPECT_FALSE(pushed->isRoot()->localValue());
    EXPECT_EQ(array.getAttribute(0), first);
    EXPECT_EQ(array.getAttribute(1)->weightAttr()->localValue(), 1.0);
    EXPECT_EQ(registeredKeywords(array), QStringList({"Size", "jointattr0", "jointattr1", "jointattr2"}));

    std::unique_ptr<JointAttr> popped = array.removeLastJoint();
    EXPECT_EQ(popped.get(), pushed);
    EXPECT_EQ(counter.tells, 2);
    EXPECT_EQ(array.getSize(), 2);
    EXPECT_EQ(array.getAttribute(0), first);
    EXPECT_EQ(registeredKeywords(array), QStringList({"Size", "jointattr0", "jointattr1"}));

    array.removeLastJoint();
    array.removeLastJoint();
    EXPECT_EQ(counter.tells, 4);
    EXPECT_EQ(array.removeLastJoint(), nullptr) << "an empty array gives nothing";
    EXPECT_EQ(counter.tells, 4) << "and tells nobody";
    EXPECT_EQ(array.getSize(), 0);
}

TEST(JointArrayAttr, AnArrayWhoseCreateFunctionRefusesDoesNotGrow)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    AT_ArrayAttr<JointAttr> array(module.get(), arrayMeta(), 0, [](int, AT_ArrayAttr<JointAttr> &, std::unique_ptr<JointAttr> *) {});
    TellCounter counter(&array);
    EXPECT_EQ(array.pushNewAttr(), nullptr);
    EXPECT_EQ(array.getSize(), 0);
    EXPECT_EQ(counter.tells, 0);
}

TEST(JointArrayAttr, ASizeChangeRebuildsEveryElementAndTheSameSizeDoesNothing)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointArrayAttr array(module.get(), arrayMeta(), 3);
    markWeights(array);
    JointAttr *first = array.getAttribute(0);
    TellCounter counter(&array);

    EXPECT_FALSE(array.setSize(3));
    EXPECT_EQ(counter.tells, 0);
    EXPECT_EQ(array.getAttribute(0), first);
    EXPECT_EQ(array.getAttribute(2)->weightAttr()->localValue(), 2.0);
    EXPECT_FALSE(array.setSize(-1));
    EXPECT_EQ(array.getSize(), 3);

    EXPECT_TRUE(array.setSize(4));
    EXPECT_EQ(counter.tells, 1);
    EXPECT_EQ(array.getSize(), 4);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(array.getAttribute(i)->weightAttr()->localValue(), 1.0) << "contents are dropped";
    EXPECT_TRUE(array.getAttribute(0)->isRoot()->localValue());
    EXPECT_EQ(registeredKeywords(array), QStringList({"Size", "jointattr0", "jointattr1", "jointattr2", "jointattr3"}));

    // A change of the size from outside goes through the call-back, and so does its undo.
    CO_CommandManager manager;
    manager.execute(array.size()->setTextValue(0.0, QStringLiteral("2")));
    EXPECT_EQ(array.getAttributes().size(), 2u);
    EXPECT_EQ(registeredKeywords(array), QStringList({"Size", "jointattr0", "jointattr1"}));
    manager.undo();
    EXPECT_EQ(array.getAttributes().size(), 4u);

    // Tells of anything but the size are ignored.
    int const before = counter.tells;
    array.callBack(array.getAttribute(1));
    EXPECT_EQ(counter.tells, before);
    EXPECT_EQ(array.getAttributes().size(), 4u);
}

TEST(JointArrayAttr, MoveAttributeMovesInTheArrayAndAmongRegisteredAttributes)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointArrayAttr array(module.get(), arrayMeta(), 4);
    TellCounter counter(&array);

    struct NoMove {
        unsigned from, to;
    };
    for (NoMove const m : {NoMove{2, 2}, NoMove{4, 0}, NoMove{0, 4}, NoMove{7, 9}, NoMove{~0u, 1}}) {
        array.moveAttribute(m.from, m.to);
        EXPECT_EQ(counter.tells, 0) << m.from << " -> " << m.to;
        EXPECT_EQ(keywords(array), QStringList({"jointattr0", "jointattr1", "jointattr2", "jointattr3"}));
    }

    array.moveAttribute(3, 0);
    EXPECT_EQ(counter.tells, 1);
    EXPECT_EQ(keywords(array), QStringList({"jointattr3", "jointattr0", "jointattr1", "jointattr2"}));
    EXPECT_EQ(registeredKeywords(array), QStringList({"Size", "jointattr3", "jointattr0", "jointattr1", "jointattr2"}));
    array.moveAttribute(1, 3);
    EXPECT_EQ(keywords(array), QStringList({"jointattr3", "jointattr1", "jointattr2", "jointattr0"}));
    EXPECT_EQ(registeredKeywords(array), QStringList({"Size", "jointattr3", "jointattr1", "jointattr2", "jointattr0"}));
}

TEST(JointArrayAttr, TextValueAndEquivalenceGoThroughSizeAndElements)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointArrayAttr a(module.get(), arrayMeta(), 2);
    JointArrayAttr b(module.get(), arrayMeta(), 2);
    JointArrayAttr shorter(module.get(), arrayMeta(), 1);

    QStringList expected{QStringLiteral("2")};
    for (int i = 0; i < 2; ++i)
        expected << a.getAttribute(i)->textValue(0.0);
    EXPECT_EQ(a.textValue(0.0), expected.join(QLatin1Char(';')));
    EXPECT_TRUE(a.textValue(0.0).startsWith(QLatin1String("2;true;;true;true;1;1;1;")));

    EXPECT_TRUE(a.isEquivalent(b));
    EXPECT_FALSE(a.isEquivalent(shorter));
    EXPECT_FALSE(shorter.isEquivalent(a));
    EXPECT_FALSE(a.isEquivalent(*a.getAttribute(0))) << "an element is no array";
    b.getAttribute(1)->isBlocker()->setLocalValue(true);
    EXPECT_FALSE(a.isEquivalent(b));
    a.getAttribute(1)->isBlocker()->setLocalValue(true);
    EXPECT_TRUE(a.isEquivalent(b));
}

TEST(JointArrayAttr, WrittenAndReadBackGivesAnEquivalentArray)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointArrayAttr source(module.get(), arrayMeta(), 3);
    markWeights(source);
    QByteArray const xml = toXml(source);
    EXPECT_LT(xml.indexOf("<Size"), xml.indexOf("<jointattr0"));

    JointArrayAttr sameSize(module.get(), arrayMeta(), 3);
    EXPECT_EQ(fromXml(sameSize, xml), QString());
    EXPECT_TRUE(sameSize.isEquivalent(source));

    // Into an array of another size: the elements are made to the file's size.
    JointArrayAttr larger(module.get(), arrayMeta(), 5);
    EXPECT_EQ(fromXml(larger, xml), QString());
    EXPECT_EQ(larger.getSize(), 3);
    EXPECT_TRUE(larger.isEquivalent(source));
    JointArrayAttr empty(module.get(), arrayMeta(), 0);
    EXPECT_EQ(fromXml(empty, xml), QString());
    EXPECT_TRUE(empty.isEquivalent(source));
}

// A joint element with the given weight, as the host writes a JointAttr.
QByteArray jointElement(int index, double weight)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    JointAttr joint(module.get(), JointAttr::getMeta(index), index == 0);
    joint.weightAttr()->setLocalValue(weight);
    QByteArray const xml = toXml(joint);
    return xml.mid(xml.indexOf("<jointattr"));
}

TEST(JointArrayAttr, AFileListingElementsInAnotherOrderGivesTheOrderOfTheFile)
{
    QByteArray const file = "<joints>\n<Size value=\"4\"/>\n" + jointElement(2, 20) + jointElement(0, 0) +
                            jointElement(3, 30) + jointElement(1, 10) + "</joints>\n";
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    for (int initial : {4, 2}) {
        SCOPED_TRACE(initial);
        JointArrayAttr array(module.get(), arrayMeta(), initial);
        ASSERT_EQ(fromXml(array, file), QString());
        EXPECT_EQ(keywords(array), QStringList({"jointattr2", "jointattr0", "jointattr3", "jointattr1"}));
        EXPECT_EQ(registeredKeywords(array),
                  QStringList({"Size", "jointattr2", "jointattr0", "jointattr3", "jointattr1"}));
        QList<double> weights;
        for (auto const &element : array.getAttributes())
            weights << element->weightAttr()->localValue();
        EXPECT_EQ(weights, QList<double>({20, 0, 30, 10})) << "each element kept its own values";

        // Written again, the file keeps the new order.
        QByteArray const again = toXml(array);
        EXPECT_LT(again.indexOf("<jointattr2"), again.indexOf("<jointattr0"));
        EXPECT_LT(again.indexOf("<jointattr3"), again.indexOf("<jointattr1"));
    }
}

TEST(JointArrayAttr, AFailedReadLeavesTheArrayAsItWas)
{
    UT_SharedPtr<MO_Module> module = UT_MakeShared<MO_Module>();
    QByteArray const reordered = jointElement(1, 50) + jointElement(0, 40);
    struct Bad {
        char const *what;
        QByteArray xml;
    };
    Bad const table[] = {
        {"unknown element", "<joints><Size value=\"2\"/>" + reordered + "<elbow/></joints>"},
        {"element beyond the size", "<joints><Size value=\"2\"/>" + reordered + jointElement(2, 1) + "</joints>"},
        {"negative size", "<joints><Size value=\"-1\"/></joints>"},
        {"size not a number", "<joints><Size value=\"two\"/>" + reordered + "</joints>"},
        {"truncated", "<joints><Size value=\"3\"/>" + reordered},
        {"bad weight", "<joints><Size value=\"2\"/>" + QByteArray(reordered).replace("value=\"50\"", "value=\"nan\"") + "</joints>"},
    };
    for (Bad const &bad : table) {
        SCOPED_TRACE(bad.what);
        JointArrayAttr array(module.get(), arrayMeta(), 2);
        markWeights(array);
        JointAttr const *first = array.getAttribute(0);
        QByteArray const before = toXml(array);
        TellCounter counter(&array);
        QString const error = fromXml(array, bad.xml);
        EXPECT_TRUE(error.startsWith(QLatin1String("test:"))) << error.toStdString();
        EXPECT_EQ(toXml(array), before);
        EXPECT_EQ(array.getAttribute(0), first);
        EXPECT_EQ(counter.tells, 0);
    }
}

} // namespace
