// SPDX-License-Identifier: GPL-3.0-or-later
// The tree of a plug-in's state, of about 1 MB, read and written; beside expat, which reads the
// same bytes into a tree of its own.
#include <benchmark/benchmark.h>
#include <expat.h>

#include <memory>
#include <string>
#include <vector>

#include "foundation/streams/memory_stream.h"
#include "foundation/text/string_formatter.h"
#include "foundation/xml/xml_document.h"

namespace {

constexpr const char* kKeys[] = {"Value", "MaxValue", "Depth", "RangeMode", "Invert", "Smoothness"};

void AddItems(MAttribute& parent, const char* name, int count) {
    for (int i = 0; i < count; ++i) {
        MAttribute& item = parent.AddSubItem(name);
        item.SetAttribute("ID", MStringFormatter("Band {0} & parameter") << i);
        for (const char* const key : kKeys)
            item.SetAttribute(key, MStringFormatter("{0;.6}") << 0.001 * i);
    }
}

const MXMLDocument& State() {
    static const MXMLDocument& document = [&]() -> MXMLDocument& {
        static MXMLDocument made;
        made.Root().SetName("settings");
        for (int i = 0; i < 60; ++i) {
            MAttribute& band = made.Root().AddSubItem(MStringFormatter("band{0}") << i);
            band.SetValue("notes of the user");
            AddItems(band.AddSubItem("MultiParameters"), "MultiParameter", 50);
            AddItems(band.AddSubItem("LFO"), "Parameter", 50);
        }
        return made;
    }();
    return document;
}

std::string Saved(bool compact) {
    MMemoryStream stream;
    State().Save(stream, compact, "utf-8");
    const auto size = static_cast<std::size_t>(stream.GetSize());
    return std::string(reinterpret_cast<const char*>(stream.GetData()), size);
}

void CountBytes(benchmark::State& state, const std::string& bytes) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

void XmlRead(benchmark::State& state) {
    const std::string bytes = Saved(state.range(0) != 0);
    for ([[maybe_unused]] auto _ : state) {
        MMemoryStream stream(bytes.data(), static_cast<std::int32_t>(bytes.size()));
        MXMLDocument document;
        document.Load(stream);
        benchmark::DoNotOptimize(document);
    }
    CountBytes(state, bytes);
}

void XmlWrite(benchmark::State& state) {
    const bool compact = state.range(0) != 0;
    for ([[maybe_unused]] auto _ : state) {
        MMemoryStream stream;
        State().Save(stream, compact, "utf-8");
        benchmark::DoNotOptimize(stream);
    }
    CountBytes(state, Saved(compact));
}

struct Node {
    std::string name;
    std::string text;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<std::unique_ptr<Node>> children;
};

struct ExpatTree {
    ExpatTree() : open{&root} {}

    Node root;
    std::vector<Node*> open;
};

void XMLCALL OnStart(void* user, const XML_Char* name, const XML_Char** attributes) {
    auto& tree = *static_cast<ExpatTree*>(user);
    auto node = std::make_unique<Node>();
    node->name = name;
    for (; *attributes != nullptr; attributes += 2)
        node->attributes.emplace_back(attributes[0], attributes[1]);
    Node* const child = node.get();
    tree.open.back()->children.push_back(std::move(node));
    tree.open.push_back(child);
}

void XMLCALL OnEnd(void* user, const XML_Char*) { static_cast<ExpatTree*>(user)->open.pop_back(); }

void XMLCALL OnText(void* user, const XML_Char* text, int length) {
    static_cast<ExpatTree*>(user)->open.back()->text.append(text, static_cast<std::size_t>(length));
}

void ExpatRead(benchmark::State& state) {
    const std::string bytes = Saved(state.range(0) != 0);
    for ([[maybe_unused]] auto _ : state) {
        ExpatTree tree;
        const XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &tree);
        XML_SetElementHandler(parser, OnStart, OnEnd);
        XML_SetCharacterDataHandler(parser, OnText);
        if (XML_Parse(parser, bytes.data(), static_cast<int>(bytes.size()), 1) != XML_STATUS_OK)
            state.SkipWithError(XML_ErrorString(XML_GetErrorCode(parser)));
        XML_ParserFree(parser);
        benchmark::DoNotOptimize(tree);
    }
    CountBytes(state, bytes);
}

}  // namespace

// The argument: 1 for the compact form, 0 for the indented one.
BENCHMARK(ExpatRead)->DenseRange(0, 1);
BENCHMARK(XmlRead)->DenseRange(0, 1);
BENCHMARK(XmlWrite)->DenseRange(0, 1);
