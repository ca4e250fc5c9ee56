#include "host/commands.h"

#include "framework/command/cmEx.h"
#include "framework/command/cmMerger.h"
#include "framework/command/cmRemoveCommand.h"
#include "framework/command/cmSized.h"

#include <utility>

namespace compositor {

namespace {

using Ko::LiString;
using Ko::RCShdPtr;

// Translates the error of the document into the failure that a command stack expects.
template <class Change>
void attempt(Change change) {
    try {
        change();
    } catch (DocumentError const&) {
        throw Ko::CmEx::ExCommandFailure("compositor/host/commands.cpp", __LINE__);
    }
}

// In bytes.
std::size_t memoryOf(Layer const& layer) {
    return layer.placed.picture->size().pixels() * sizeof(Colour);
}

/// A layer that is inserted into the document and removed again.
class Presence {
public:
    Presence(Document& document, Layer layer, std::size_t index)
        : _document(document), _layer(std::move(layer)), _index(index) {}

    std::string const& name() const { return _layer.name; }
    // What the document does not hold as well.
    std::size_t memory() const { return _isInserted ? 0 : memoryOf(_layer); }
    void insert() {
        attempt([this] { _document.insert(_index, _layer); });
        _isInserted = true;
    }
    void remove() {
        attempt([this] {
            _index = _document.indexOf(_layer.id);
            _layer = _document.remove(_layer.id);
        });
        _isInserted = false;
    }

private:
    Document& _document;
    Layer _layer;
    std::size_t _index;
    bool _isInserted = false;
};

class AddLayerCommand final : public Ko::CmCommand, public Ko::CmSized {
public:
    AddLayerCommand(Document& document, Layer layer)
        : _presence(document, std::move(layer), document.layers().size()) {}
    LiString getDescription() const override { return "Add " + _presence.name(); }
    std::size_t getMemorySize() const noexcept override { return _presence.memory(); }

protected:
    void executeInternal() override { _presence.insert(); }
    void unexecuteInternal() override { _presence.remove(); }

private:
    Presence _presence;
};

class RemoveLayerCommand final : public Ko::CmRemoveCommand, public Ko::CmSized {
public:
    RemoveLayerCommand(Document& document, Layer const& layer) : _presence(document, layer, 0) {}
    LiString getDescription() const override { return "Remove " + _presence.name(); }
    std::size_t getMemorySize() const noexcept override { return _presence.memory(); }

protected:
    void executeInternal() override { _presence.remove(); }
    void unexecuteInternal() override { _presence.insert(); }

private:
    Presence _presence;
};

/// A command that swaps a value of the document for its own, and back again.
class SwapCommand : public Ko::CmCommand {
public:
    SwapCommand(Document& document, std::string description)
        : _document(document), _description(std::move(description)) {}
    LiString getDescription() const override { return _description; }

protected:
    void executeInternal() override {
        attempt([this] { swap(_document); });
    }
    void unexecuteInternal() override {
        attempt([this] { swap(_document); });
    }
    virtual void swap(Document& document) = 0;
    Document const& document() const { return _document; }

private:
    Document& _document;
    std::string _description;
};

class ReorderLayerCommand final : public SwapCommand {
public:
    ReorderLayerCommand(Document& document, Layer const& layer, std::size_t index)
        : SwapCommand(document, "Reorder " + layer.name), _id(layer.id), _index(index) {}

private:
    void swap(Document& document) override {
        std::size_t const before = document.indexOf(_id);
        document.reorder(_id, _index);
        _index = before;
    }

    LayerId _id;
    std::size_t _index;
};

class ChangeLayerCommand : public SwapCommand, public Ko::CmSized {
public:
    ChangeLayerCommand(Document& document, Layer changed, std::string description)
        : SwapCommand(document, std::move(description)), _other(std::move(changed)) {}
    std::size_t getMemorySize() const noexcept override { return _memory; }

protected:
    LayerId layer() const { return _other.id; }

private:
    void swap(Document& document) override {
        Layer before = document.layer(_other.id);
        document.replace(_other);
        _memory = before.placed.picture == _other.placed.picture ? 0 : memoryOf(before);
        _other = std::move(before);
    }

    Layer _other;
    std::size_t _memory = 0;
};

class NudgeLayerCommand final : public ChangeLayerCommand, public Ko::CmMergeable {
public:
    using ChangeLayerCommand::ChangeLayerCommand;

    void const* getMergeTarget() const override { return &document(); }
    // Keeps the layer as it was before the first of them: the last one is in the document.
    bool absorb(Ko::CmCommand const& later) override {
        return static_cast<NudgeLayerCommand const&>(later).layer() == layer();
    }
};

class SetCanvasCommand final : public SwapCommand {
public:
    SetCanvasCommand(Document& document, Size canvas) : SwapCommand(document, "Set Canvas"), _other(canvas) {}

private:
    void swap(Document& document) override {
        Size const before = document.canvas();
        document.setCanvas(std::exchange(_other, before));
    }

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

RCShdPtr<Ko::CmCommand> makeNudgeLayer(Document& document, Layer changed, std::string description) {
    return RCShdPtr<NudgeLayerCommand>::create(document, std::move(changed), std::move(description));
}

RCShdPtr<Ko::CmCommand> makeSetCanvas(Document& document, Size canvas) {
    return RCShdPtr<SetCanvasCommand>::create(document, canvas);
}

} // namespace compositor
