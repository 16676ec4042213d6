// An attribute that holds a growable array of attributes of one kind, and its scene file reader.
//
// AT_ArrayAttr<T> is a complex attribute whose registered sub-attributes are, in order, its size
// (an AT_IntAttr with keyword "Size") and then its elements, so the scene file lists them in that
// order. The array owns its elements; a create function given at construction makes each new one.
//
// The size attribute is the array's teller: the array listens to it, and a change of the size
// from outside (an undo, a scene file, an editor) rebuilds the array to the new count. Careful:
// that rebuild makes every element anew and drops their values. Only pushNewAttr and popAttr keep
// the elements they do not touch.
//
// PIO_XML::AT_ArrayAttrReader<T> reads the array back and puts the elements in the order of the
// file. Like every reader of the host it changes nothing until the whole file has been read.
#pragma once

#include "host/HostAPI.h"

#include <QString>

#include <algorithm>
#include <climits>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace PIO_XML {
template <class T>
class AT_ArrayAttrReader;
}

template <class T>
class AT_ArrayAttr : public AT_ComplexAttr, public TUListener {
public:
    using Elements = std::vector<std::unique_ptr<T>>;
    // Makes the element for slot `index` of `array` into `*out`; leaves it null to refuse. A null
    // `out` asks for nothing.
    using CreateFunction = std::function<void(int index, AT_ArrayAttr<T> &array, std::unique_ptr<T> *out)>;

    // Flags of the size meta: NodeDirtyOnChange | NotAnimatable.
    static constexpr int kSizeFlags = 9;

    // Registers the size first (minimum 0, step 1), makes `size` elements, then listens to the
    // size.
    AT_ArrayAttr(AT_AttrOwner *node, AT_AttrMeta const &meta, int size, CreateFunction create)
        : AT_ComplexAttr(node, meta), create_(std::move(create)),
          size_(std::make_unique<AT_IntAttr>(node, sizeMeta(), 0, INT_MIN, INT_MAX, 1))
    {
        size_->setMinValue(0);
        registerAttr(size_.get());
        setSize(size);
        phone(size_.get());
    }

    ~AT_ArrayAttr() override { hangUpAll(); }

    static QString TypeString() { return QStringLiteral("ARRAY_") + AT_GroupAttr::TypeString(); }
    static UT_DynKey const &staticTypeKey()
    {
        static UT_DynKey const key(TypeString().toStdString());
        return key;
    }
    QString typeName() const override { return TypeString(); }
    UT_DynKey const &typeKey() const override { return staticTypeKey(); }

    // The element at `index`; null out of range.
    T *getAttribute(int index) const
    {
        return index >= 0 && index < static_cast<int>(elements_.size()) ? elements_[static_cast<size_t>(index)].get()
                                                                        : nullptr;
    }
    Elements const &getAttributes() const { return elements_; }
    CreateFunction const &getCreateFunction() const { return create_; }
    int getSize() const { return size_->localValue(); }
    AT_IntAttr *size() const { return size_.get(); }

    // Replaces every element by `elements`, unless the count is unchanged (false, nothing
    // happens). With `create` set, each slot is made by the create function (what `elements`
    // held is dropped); else the given elements are taken as they are. Clears `create`, sets the
    // size and tells the listeners once.
    bool setSize(Elements &&elements, bool &create)
    {
        if (elements.size() == elements_.size())
            return false;
        for (auto const &old : elements_)
            unregisterAttr(old.get());
        Elements dropped = std::exchange(elements_, std::move(elements));
        for (size_t i = 0; i < elements_.size(); ++i) {
            if (create)
                make(static_cast<int>(i), elements_[i]);
            registerAttr(elements_[i].get());
        }
        create = false;
        size_->setLocalValue(static_cast<int>(elements_.size()));
        notifyChanged();
        return true;
    }

    // Makes `count` new elements; false when the count is negative or unchanged.
    bool setSize(int count)
    {
        if (count < 0)
            return false;
        bool create = true;
        return setSize(Elements(static_cast<size_t>(count)), create);
    }

    // A tell from the size rebuilds the array to the size's value; tells from anything else are
    // ignored.
    void callBack(TUTeller *teller) override
    {
        if (teller == size_.get())
            setSize(size_->localValue());
    }

    // Appends a new element made by the create function; null (and nothing changed) if it makes
    // none.
    T *pushNewAttr()
    {
        std::unique_ptr<T> element;
        make(static_cast<int>(elements_.size()), element);
        if (!element)
            return nullptr;
        T *raw = element.get();
        elements_.push_back(std::move(element));
        registerAttr(raw);
        size_->setLocalValue(static_cast<int>(elements_.size()));
        notifyChanged();
        return raw;
    }

    // Takes the last element out and gives it to the caller; null, and nobody told, when empty.
    std::unique_ptr<T> popAttr()
    {
        if (elements_.empty())
            return nullptr;
        std::unique_ptr<T> last = std::move(elements_.back());
        elements_.pop_back();
        unregisterAttr(last.get());
        size_->setLocalValue(static_cast<int>(elements_.size()));
        notifyChanged();
        return last;
    }

    // Moves the element at `from` to `to`, in the array and by the same distance among the
    // registered attributes, and tells the listeners once. Nothing happens, and nobody is told,
    // when the two are equal or either is out of range.
    void moveAttribute(unsigned from, unsigned to)
    {
        if (!movePlaces(elements_, from, to))
            return;
        std::vector<AT_Attr *> const &registered = registeredAttrs();
        int const place = static_cast<int>(std::find(registered.begin(), registered.end(), elements_[to].get()) -
                                           registered.begin());
        moveRegisteredAttr(place, place + static_cast<int>(to) - static_cast<int>(from));
        notifyChanged();
    }

    // The same kind and an equivalent size, then every element, pairwise, equivalent.
    bool isEquivalent(AT_Attr const &other) const override
    {
        auto const *o = dynamic_cast<AT_ArrayAttr<T> const *>(&other);
        if (!o || !size_->isEquivalent(*o->size_))
            return false;
        for (size_t i = 0; i < elements_.size(); ++i) {
            T const *mine = elements_[i].get();
            T const *theirs = i < o->elements_.size() ? o->elements_[i].get() : nullptr;
            if (mine != theirs && (!mine || !theirs || !mine->isEquivalent(*theirs)))
                return false;
        }
        return true;
    }

    std::shared_ptr<PIO_XML::ComponentReader> componentReader() override
    {
        return std::make_shared<PIO_XML::AT_ArrayAttrReader<T>>(this);
    }

    // The rule of moveAttribute on any list: moves the item at `from` to `to`; false, nothing
    // moved, when they are equal or out of range.
    template <class List>
    static bool movePlaces(List &list, unsigned from, unsigned to)
    {
        if (from == to || from >= list.size() || to >= list.size())
            return false;
        auto item = std::move(list[from]);
        list.erase(list.begin() + from);
        list.insert(list.begin() + to, std::move(item));
        return true;
    }

private:
    static AT_AttrMeta const &sizeMeta()
    {
        static AT_AttrMeta const meta(QStringLiteral("Size"), QStringLiteral("Size"), kSizeFlags);
        return meta;
    }

    void make(int index, std::unique_ptr<T> &out)
    {
        if (create_)
            create_(index, *this, &out);
    }

    CreateFunction create_;
    Elements elements_;                // registered after the size, in this order
    std::unique_ptr<AT_IntAttr> size_; // = elements_.size() once a change is complete
};

namespace PIO_XML {

// Reads an array's element: the size first, then the elements, found by XML keyword or keyword.
// Each element is moved to the place it has in the file, counting the size as the first child.
//
// The size of the file may differ from the array's: the elements are then made anew here, read,
// and put in the array only once the whole file has been read, since the host applies what
// readers read only on success. Moves are worked out on the reader's own copy of the order and
// replayed on the array on success in the same sequence.
template <class T>
class AT_ArrayAttrReader : public ComponentReader {
public:
    explicit AT_ArrayAttrReader(AT_ArrayAttr<T> *array) : array_(array) {}

    std::shared_ptr<ComponentReader> startElement(Context &ctx, QString const &name,
                                                  QXmlStreamAttributes const &attributes) override
    {
        if (state_ == 0) {
            // The array's own element; the array keeps nothing in its XML attributes.
            state_ = 1;
            own_ = name;
            count_ = 0;
            for (auto const &element : array_->getAttributes())
                order_.push_back(element.get());
            return shared_from_this();
        }
        AT_Attr *found = nullptr;
        int place = -1;
        if (!name.isEmpty() && (name == array_->size()->xmlKeyword() || name == array_->size()->keyword())) {
            found = array_->size();
            place = 0;
            stageSize(ctx, attributes);
        } else {
            for (size_t i = 0; i < order_.size() && !found; ++i) {
                if (order_[i] && !name.isEmpty() && (order_[i]->xmlKeyword() == name || order_[i]->keyword() == name)) {
                    found = order_[i];
                    place = static_cast<int>(i) + 1;
                }
            }
            if (!found)
                return errorHandler(ctx, QStringLiteral("expected <Size> or an element of the array inside <%1>, found <%2>")
                                             .arg(own_, name));
            unsigned const from = static_cast<unsigned>(place - 1);
            unsigned const to = static_cast<unsigned>(count_ - 1);
            if (AT_ArrayAttr<T>::movePlaces(order_, from, to)) {
                AT_ArrayAttr<T> *array = array_;
                ctx.onSuccess([array, from, to] { array->moveAttribute(from, to); });
            }
        }
        ++count_;
        return startChild(ctx, found->componentReader(), name, attributes);
    }

private:
    // Makes new elements for a size that differs from the array's, to be read into and swapped
    // in on success. A size that does not parse is left to the size's own reader to report.
    void stageSize(Context &ctx, QXmlStreamAttributes const &attributes)
    {
        bool ok = false;
        int const count = attributes.value(QLatin1String("value")).toInt(&ok);
        if (!ok || count < 0 || count == static_cast<int>(order_.size()))
            return;
        auto staged = std::make_shared<typename AT_ArrayAttr<T>::Elements>(static_cast<size_t>(count));
        order_.clear();
        for (int i = 0; i < count; ++i) {
            if (array_->getCreateFunction())
                array_->getCreateFunction()(i, *array_, &(*staged)[static_cast<size_t>(i)]);
            order_.push_back((*staged)[static_cast<size_t>(i)].get());
        }
        AT_ArrayAttr<T> *array = array_;
        ctx.onSuccess([array, staged] {
            bool create = false;
            array->setSize(std::move(*staged), create);
        });
    }

    AT_ArrayAttr<T> *array_;  // the array being read; outlives the reading
    int state_ = 0;           // 0 before the array's own element, 1 inside it
    int count_ = 0;           // child elements started so far, the size included
    QString own_;             // the array's element name
    std::vector<T *> order_;  // the elements as they will stand once the moves so far are made
};

} // namespace PIO_XML
