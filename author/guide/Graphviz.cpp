#include "author/guide/Graphviz.internal.h"

#ifdef HDNT_WITH_GRAPHVIZ

#include <dlfcn.h>
#include <gvc.h>

#include <array>
#include <charconv>
#include <mutex>
#include <string_view>

namespace hdnt::author::guide {

namespace {

// Whatever the locale.
double numberIn(std::string_view text) {
    double number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// Graphviz, as far as it is there. Never unloaded: what it keeps stays reachable.
class Graphviz {
public:
    static Graphviz& instance() {
        static Graphviz& graphviz = *new Graphviz;
        return graphviz;
    }

    /// The values of an attribute of all nodes; none, with a reason, when there is no layout.
    std::vector<std::string> ask(const std::string& text, size_t numNodes, std::string attribute, std::string& reason) {
        reason = reason_;
        if (!reason.empty()) return {};
        const std::scoped_lock lock(mutex_);
        const agusererrf before = setErrorFunction_([](char*) { return 0; });
        std::vector<std::string> values;
        Agraph_t* const graph = read_(text.c_str());
        if (graph && layOut_(context_, graph, "dot") == 0) {
            attachAttributes_(graph);
            values = valuesOf(*graph, numNodes, attribute);
            freeLayout_(context_, graph);
        } else {
            reason = "Graphviz finds no layout";
        }
        if (graph) close_(graph);
        setErrorFunction_(before);
        return values;
    }

private:
    // The layout's own plugin is taken by its file: a context that looks for plugins loads those for fonts too.
    Graphviz() {
        void* const graphs = open("libcgraph.so.6");
        void* const layouts = open("libgvc.so.6");
        find(graphs, "agmemread", read_);
        find(graphs, "agclose", close_);
        find(graphs, "agnode", node_);
        find(graphs, "agget", attribute_);
        find(graphs, "agseterrf", setErrorFunction_);
        find(layouts, "gvContextPlugins", makeContext_);
        find(layouts, "gvLayout", layOut_);
        find(layouts, "gvFreeLayout", freeLayout_);
        find(layouts, "attach_attrs", attachAttributes_);
        if (!reason_.empty()) return;
        plugins_[0] = {
            "gvplugin_dot_layout_LTX_library",
            symbol(open(besideGvc("graphviz/libgvplugin_dot_layout.so.6")), "gvplugin_dot_layout_LTX_library")};
        if (reason_.empty()) context_ = makeContext_(plugins_.data(), 0);
        if (reason_.empty() && !context_) reason_ = "Graphviz does not start";
    }

    void* open(const std::string& file) {
        void* const library = reason_.empty() ? dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL) : nullptr;
        if (!library && reason_.empty()) reason_ = "Graphviz is not installed: no " + file;
        return library;
    }

    void* symbol(void* library, const char* name) {
        void* const found = library ? dlsym(library, name) : nullptr;
        if (!found && reason_.empty()) reason_ = std::string("Graphviz has no ") + name;
        return found;
    }

    template <typename Function>
    void find(void* library, const char* name, Function*& function) {
        function = reinterpret_cast<Function*>(symbol(library, name));
    }

    std::string besideGvc(const std::string& file) const {
        Dl_info info{};
        if (dladdr(reinterpret_cast<void*>(layOut_), &info) == 0 || !info.dli_fname) return file;
        const std::string path = info.dli_fname;
        return path.substr(0, path.rfind('/') + 1) + file;
    }

    std::vector<std::string> valuesOf(Agraph_t& graph, size_t numNodes, std::string& attribute) const {
        std::vector<std::string> values;
        for (size_t i = 0; i < numNodes; ++i) {
            std::string name = "n" + std::to_string(i);
            Agnode_t* const node = node_(&graph, name.data(), 0);
            const char* const value = node ? attribute_(node, attribute.data()) : nullptr;
            values.emplace_back(value ? value : "");
        }
        return values;
    }

    std::string reason_;
    std::mutex mutex_;
    GVC_t* context_ = nullptr;
    std::array<lt_symlist_t, 2> plugins_{};
    decltype(agmemread)* read_ = nullptr;
    decltype(agclose)* close_ = nullptr;
    decltype(agnode)* node_ = nullptr;
    decltype(agget)* attribute_ = nullptr;
    decltype(agseterrf)* setErrorFunction_ = nullptr;
    decltype(gvContextPlugins)* makeContext_ = nullptr;
    decltype(gvLayout)* layOut_ = nullptr;
    decltype(gvFreeLayout)* freeLayout_ = nullptr;
    decltype(attach_attrs)* attachAttributes_ = nullptr;
};

} // namespace

DotLayout laidOutByDot(const std::string& graph, size_t numNodes) {
    DotLayout layout;
    for (const std::string_view place : Graphviz::instance().ask(graph, numNodes, "pos", layout.reason))
        layout.centres.push_back({numberIn(place), -numberIn(place.substr(place.find(',') + 1))}); // "x,y", y upwards
    return layout;
}

DotRanks rankedByDot(const std::string& graph, size_t numNodes) {
    DotRanks ranks;
    for (const std::string_view rank : Graphviz::instance().ask(graph, numNodes, "rank", ranks.reason))
        ranks.ranks.push_back(static_cast<int>(numberIn(rank)));
    return ranks;
}

} // namespace hdnt::author::guide

#else

namespace hdnt::author::guide {

DotLayout laidOutByDot(const std::string&, size_t) { return {{}, "built without Graphviz"}; }
DotRanks rankedByDot(const std::string&, size_t) { return {{}, "built without Graphviz"}; }

} // namespace hdnt::author::guide

#endif
