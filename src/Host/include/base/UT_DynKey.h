// Keys of run-time types: each dynamic attribute type, and each kind of deformation information,
// has one key, made once and compared by name. Two keys made from the same name are equal.
#pragma once

#include <string>
#include <utility>

class UT_DynKey {
public:
    UT_DynKey() = default;
    explicit UT_DynKey(std::string name) : name_(std::move(name)) {}

    std::string const &name() const { return name_; }
    bool isValid() const { return !name_.empty(); }

    bool operator==(UT_DynKey const &o) const { return name_ == o.name_; }
    bool operator!=(UT_DynKey const &o) const { return name_ != o.name_; }
    bool operator<(UT_DynKey const &o) const { return name_ < o.name_; }

private:
    std::string name_;  // empty for the invalid key
};
