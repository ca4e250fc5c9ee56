#include "host/commands.h"

#include "framework/command/cmEx.h"
#include "framework/command/cmRemoveCommand.h"

#include <utility>

namespace compositor {

namespace {

using Ko::LiString;
using Ko::RCShdPtr;

// Runs a change; what the document refuses becomes the failure that a command stack expects.
template <class Change>
void attempt(Change change) {
    try {
        change();
    } catch (DocumentError const&) {
        throw Ko::CmEx::ExCommandFailure("compositor/host/commands.cpp", __LINE__);
    }
}

/// A layer that goes into the document and out of it again.
class Presence {
public:
    Presence(Document& document, Layer layer, std::size_t index)
        : _document(document), _layer(std::move(layer)), _index(index) {}

    std::string const& name() const { return _layer.name; }
    void putIn() {
        attempt([this] { _document.insert(_index, _layer); });
    }
    void takeOut() {
        attempt([this] {
            _index = _document.indexOf(_layer.id);
            _layer = _document.remove(_layer.id);
        });
    }

private:
    Document& _document;
    Layer _layer;
    std::size_t _index;
};

class AddLayerCommand final : public Ko::CmCommand {
public:
    AddLayerCommand(Document& document, Layer layer)
        : _presence(document, std::move(layer), document.layers().size()) {}
    LiString getDescription() const override { return "Add " + _presence.name(); }

protected:
    void executeInternal() override { _presence.putIn(); }
    void unexecuteInternal() override { _presence.takeOut(); }

private:
    Presence _presence;
};

class RemoveLayerCommand final : public Ko::CmRemoveCommand {
public:
    RemoveLayerCommand(Document& document, Layer const& layer) : _presence(document, layer, 0) {}
    LiString getDescription() const override { return "Remove " + _presence.name(); }

protected:
    void executeInternal() override { _presence.takeOut(); }
    void unexecuteInternal() override { _presence.putIn(); }

private:
    Presence _presence;
};

class ReorderLayerCommand final : public Ko::CmCommand {
public:
    ReorderLayerCommand(Document& document, Layer const& layer, std::size_t index)
        : _document(document), _id(layer.id), _description("Reorder " + layer.name), _index(index) {}
    LiString getDescription() const override { return _description; }

protected:
    void executeInternal() override { swap(); }
    void unexecuteInternal() override { swap(); }

private:
    void swap() {
        attempt([this] {
            std::size_t const before = _document.indexOf(_id);
            _document.reorder(_id, _index);
            _index = before;
        });
    }

    Document& _document;
    std::uint64_t _id;
    std::string _description;
    std::size_t _index;
};

class ChangeLayerCommand final : public Ko::CmCommand {
public:
    ChangeLayerCommand(Document& document, Layer changed, std::string description)
        : _document(document), _other(std::move(changed)), _description(std::move(description)) {}
    LiString getDescription() const override { return _description; }

protected:
    void executeInternal() override { swap(); }
    void unexecuteInternal() override { swap(); }

private:
    void swap() {
        attempt([this] {
            Layer before = _document.layer(_other.id);
            _document.replace(_other);
            _other = std::move(before);
        });
    }

    Document& _document;
    Layer _other;
    std::string _description;
};

class SetCanvasCommand final : public Ko::CmCommand {
public:
    SetCanvasCommand(Document& document, Size canvas) : _document(document), _other(canvas) {}
    LiString getDescription() const override { return "Set Canvas"; }

protected:
    void executeInternal() override { swap(); }
    void unexecuteInternal() override { swap(); }

private:
    void swap() {
        Size const before = _document.canvas();
        _document.setCanvas(std::exchange(_other, before));
    }

    Document& _document;
    Size _other;
};

} // namespace

RCShdPtr<Ko::CmCommand> makeAddLayer(Document& document, Layer layer) {
    return RCShdPtr<AddLayerCommand>::create(document, std::move(layer));
}

RCShdPtr<Ko::CmCommand> makeRemoveLayer(Document& document, Layer const& layer) {
    return RCShdPtr<RemoveLayerCommand>::create(document, layer);
}

RCShdPtr<Ko::CmCommand> makeReorderLayer(Document& document, Layer const& layer, std::size_t index) {
    return RCShdPtr<ReorderLayerCommand>::create(document, layer, index);
}

RCShdPtr<Ko::CmCommand> makeChangeLayer(Document& document, Layer changed, std::string description) {
    return RCShdPtr<ChangeLayerCommand>::create(document, std::move(changed), std::move(description));
}

RCShdPtr<Ko::CmCommand> makeSetCanvas(Document& document, Size canvas) {
    return RCShdPtr<SetCanvasCommand>::create(document, canvas);
}

} // namespace compositor
