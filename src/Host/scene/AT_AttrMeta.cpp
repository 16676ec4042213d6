#include "scene/AT_AttrMeta.h"

#include <utility>

AT_AttrMetaContainer::AT_AttrMetaContainer(QString keyword_, QString displayName_, int flags_,
                                           QString xmlKeyword_)
    : keyword(std::move(keyword_)), xmlKeyword(std::move(xmlKeyword_)),
      displayName(std::move(displayName_)), flags(flags_)
{
}

AT_AttrMetaContainer::~AT_AttrMetaContainer() = default;

std::unique_ptr<AT_AttrMetaContainer> AT_AttrMetaContainer::clone() const
{
    return std::make_unique<AT_AttrMetaContainer>(*this);
}

AT_DoubleAttrMetaContainer::AT_DoubleAttrMetaContainer(QString keyword_, QString displayName_,
                                                       QString stepPreference_, double minValue_,
                                                       double maxValue_, double editorMin_,
                                                       double editorMax_, double step_, int flags_)
    : AT_AttrMetaContainer(std::move(keyword_), std::move(displayName_), flags_),
      stepPreference(std::move(stepPreference_)), minValue(minValue_), maxValue(maxValue_),
      editorMin(editorMin_), editorMax(editorMax_), step(step_)
{
}

std::unique_ptr<AT_AttrMetaContainer> AT_DoubleAttrMetaContainer::clone() const
{
    return std::make_unique<AT_DoubleAttrMetaContainer>(*this);
}

AT_AttrMeta::AT_AttrMeta() : d_(std::make_shared<AT_AttrMetaContainer>()) {}

AT_AttrMeta::AT_AttrMeta(QString const &keyword, QString const &displayName, int flags)
    : d_(std::make_shared<AT_AttrMetaContainer>(keyword, displayName, flags))
{
}

AT_AttrMeta::AT_AttrMeta(QString const &keyword, QString const &xmlKeyword,
                         QString const &displayName, int flags)
    : d_(std::make_shared<AT_AttrMetaContainer>(keyword, displayName, flags, xmlKeyword))
{
}

AT_AttrMeta::AT_AttrMeta(std::shared_ptr<AT_AttrMetaContainer const> container)
    : d_(container ? std::move(container) : std::make_shared<AT_AttrMetaContainer>())
{
}

AT_AttrMeta::~AT_AttrMeta() = default;

QString const &AT_AttrMeta::keyword() const { return d_->keyword; }
QString AT_AttrMeta::xmlKeyword() const { return d_->xmlKeyword.isEmpty() ? d_->keyword : d_->xmlKeyword; }
QString const &AT_AttrMeta::displayName() const { return d_->displayName; }
int AT_AttrMeta::flags() const { return d_->flags; }
bool AT_AttrMeta::hasFlag(int flag) const { return (d_->flags & flag) == flag; }
bool AT_AttrMeta::isNodeDirtyOnChange() const { return hasFlag(AT_AttrMetaContainer::NodeDirtyOnChange); }

void AT_AttrMeta::setKeyword(QString const &keyword) { detach().keyword = keyword; }
void AT_AttrMeta::setXmlKeyword(QString const &xmlKeyword) { detach().xmlKeyword = xmlKeyword; }
void AT_AttrMeta::setDisplayName(QString const &displayName) { detach().displayName = displayName; }
void AT_AttrMeta::setFlags(int flags) { detach().flags = flags; }

AT_AttrMetaContainer const &AT_AttrMeta::container() const { return *d_; }

AT_DoubleAttrMetaContainer const *AT_AttrMeta::doubleContainer() const
{
    return dynamic_cast<AT_DoubleAttrMetaContainer const *>(d_.get());
}

bool AT_AttrMeta::sharesContainerWith(AT_AttrMeta const &other) const { return d_ == other.d_; }

AT_AttrMetaContainer &AT_AttrMeta::detach()
{
    std::shared_ptr<AT_AttrMetaContainer> own = d_->clone();
    AT_AttrMetaContainer &data = *own;
    d_ = std::move(own);
    return data;
}

AT_DoubleAttrMeta::AT_DoubleAttrMeta(QString const &keyword, QString const &displayName,
                                     QString const &stepPreference, double minValue,
                                     double maxValue, double editorMin, double editorMax,
                                     double step, int flags)
    : AT_AttrMeta(std::make_shared<AT_DoubleAttrMetaContainer>(
          keyword, displayName, stepPreference, minValue, maxValue, editorMin, editorMax, step, flags))
{
}
