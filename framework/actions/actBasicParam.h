#pragma once

#include "framework/frameworkApi.h"
#include "internalAPI/snItemConvert.h"

namespace Ko {

/// A text that an action takes as its target or input; an empty one stands for "none".
class KO_FRAMEWORK_API ActBasicParam {
public:
    /// Without a text it stands for "none".
    ActBasicParam();
    explicit ActBasicParam(LiString const& value);

    /// The text; empty for "none":
    LiString const& getValue() const noexcept { return _value; }
    void setValue(LiString const& value) { _value = value; }

    /// Byte for byte.
    bool isEqual(ActBasicParam const& other) const noexcept { return _value == other._value; }
    /// Writes the text.
    void dump(std::ostream& stream) const;

    /// For the package "actions": items with such values can be converted between the two:
    static void initialize();
    static void finalize();

private:
    LiString _value;
};

/// Items of equal texts are equal.
template <>
class SnItemValue<ActBasicParam> {
public:
    /// As for every type of value:
    static bool isEqual(ActBasicParam const& a, ActBasicParam const& b) noexcept { return a.isEqual(b); }
    static std::size_t getHash(ActBasicParam const& param) noexcept { return std::hash<LiString>()(param.getValue()); }
    static void dump(std::ostream& stream, ActBasicParam const& param) { param.dump(stream); }
};

/// Holds for an item that carries an `ActBasicParam`.
using IsActBasicParamSnItem = SnIsItem<ActBasicParam>;

extern template class KO_FRAMEWORK_API SnItemBasic<ActBasicParam>;
extern template class KO_FRAMEWORK_API SnIsItem<ActBasicParam>;
extern template class KO_FRAMEWORK_API SnItemConvert<ActBasicParam>;

} // namespace Ko
