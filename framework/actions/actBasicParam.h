#pragma once

#include "framework/frameworkApi.h"
#include "internalAPI/snItemConvert.h"

namespace Ko {

/// A text that an action takes as its target or input; an empty one stands for "none".
class KO_FRAMEWORK_API ActBasicParam {
public:
    /// The empty text, which stands for "none".
    ActBasicParam();
    explicit ActBasicParam(LiString const& value);

    /// The text; empty for "none".
    [[nodiscard]] LiString const& getValue() const noexcept { return _value; }
    /// Replaces the text; empty for "none".
    void setValue(LiString const& value) { _value = value; }

    /// Whether the texts are equal, byte for byte.
    [[nodiscard]] bool isEqual(ActBasicParam const& other) const noexcept { return _value == other._value; }
    /// Writes the text.
    void dump(std::ostream& stream) const;

    /// Whether an item stands for "none": it carries an empty text of this type.
    [[nodiscard]] static bool isNone(RCShdPtr<SnItem const> const& item);

    /// Lets items with such values be converted. For the package "actions".
    static void initialize();
    /// Ends the conversion. For the package "actions".
    static void finalize();

private:
    LiString _value;
};

/// Items of equal texts are equal.
template <>
class SnItemValue<ActBasicParam> {
public:
    /// Whether the texts are equal.
    [[nodiscard]] static bool isEqual(ActBasicParam const& a, ActBasicParam const& b) noexcept { return a.isEqual(b); }
    /// The hash of the text.
    [[nodiscard]] static std::size_t getHash(ActBasicParam const& param) noexcept {
        return std::hash<LiString>()(param.getValue());
    }
    /// Writes the text.
    static void dump(std::ostream& stream, ActBasicParam const& param) { param.dump(stream); }
};

/// Holds for an item that carries an `ActBasicParam`.
using IsActBasicParamSnItem = SnIsItem<ActBasicParam>;

} // namespace Ko

KO_DECLARE_ITEM_TYPE(KO_FRAMEWORK_API, Ko::ActBasicParam)
