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

// "x,y", y upwards; not read by the locale.
Centre centreAt(std::string_view text) {
    Centre centre{0, 0};
    const char* const end = text.data() + text.size();
    const std::from_chars_result first = std::from_chars(text.data(), end, centre.x);
    if (first.ptr != end) std::from_chars(first.ptr + 1, end, centre.y);
    centre.y = -centre.y;
    return centre;
}

/// Graphviz, as far as it is there. Never unloaded: what it keeps stays reachable.
class Graphviz {
public:
    static Graphviz& instance() {
        static Graphviz& graphviz = *new Graphviz;
        return graphviz;
    }

    DotLayout layOut(const std::string& text, size_t numNodes) {
        if (!reason_.empty()) return {{}, reason_};
        const std::scoped_lock lock(mutex_);
        const agusererrf before = setErrorFunction_([](char*) { return 0; });
        DotLayout layout;
        if (Agraph_t* const graph = read_(text.c_str())) {
            layout = layOut(*graph, numNodes);
            close_(graph);
        } else layout.reason = "Graphviz cannot read the graph";
        setErrorFunction_(before);
        return layout;
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

    DotLayout layOut(Agraph_t& graph, size_t numNodes) {
        DotLayout layout;
        if (layOut_(context_, &graph, "dot") != 0) return {{}, "Graphviz finds no layout"};
        attachAttributes_(&graph);
        std::string position = "pos";
        for (size_t i = 0; i < numNodes; ++i) {
            std::string name = "n" + std::to_string(i);
            Agnode_t* const node = node_(&graph, name.data(), 0);
            const char* const place = node ? attribute_(node, position.data()) : nullptr;
            layout.centres.push_back(centreAt(place ? place : ""));
        }
        freeLayout_(context_, &graph);
        return layout;
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
    return Graphviz::instance().layOut(graph, numNodes);
}

} // namespace hdnt::author::guide

#else

namespace hdnt::author::guide {

DotLayout laidOutByDot(const std::string&, size_t) { return {{}, "built without Graphviz"}; }

} // namespace hdnt::author::guide

#endif
