// All blocks that are mapped or mapped to, as one drawing.
#include "author/guide/Graphviz.internal.h"
#include "author/guide/Svg.internal.h"
#include "author/guide/pages.internal.h"
#include "hdnt/model/HDNTBlock.h"
#include "hdnt/platform/Text.h"

#include <algorithm>

namespace hdnt::author::guide {

namespace {

constexpr std::size_t mostNodes = 400; ///< more of them nobody can follow
constexpr double character = 6.7;      ///< of a name, as the style sheet has it
constexpr double height = 18;
constexpr double margin = 10;
constexpr double pointsPerInch = 72;

struct Node {
    const HDNTBlock* block;
    std::string page;
    double width;
    std::vector<std::size_t> targets = {};
    Centre centre{0, 0};
};

enum class State : unsigned char { New, Open, Done };

class MappingGraph {
public:
    explicit MappingGraph(const Book& book) {
        for (const HDNTBlock* block : book.blocks()) addEdges(book, *block);
    }

    std::string drawn() {
        if (nodes_.empty() || nodes_.size() > mostNodes) return "";
        const DotLayout layout = laidOutByDot(text(), nodes_.size());
        if (!layout.reason.empty()) return "";
        for (std::size_t i = 0; i < nodes_.size(); ++i) nodes_[i].centre = layout.centres[i];
        moveToOrigin();
        return svg();
    }

private:
    void addEdges(const Book& book, const HDNTBlock& block) {
        for (const std::string& type : book.relationsOf(block).mapsTo) {
            const HDNTBlock* const target = book.find(type);
            if (!target || book.pageOf(target).empty()) continue;
            const std::size_t from = nodeOf(book, block);
            const std::size_t to = nodeOf(book, *target);
            nodes_[from].targets.push_back(to);
        }
    }

    std::size_t nodeOf(const Book& book, const HDNTBlock& block) {
        const auto [found, isNew] = index_.try_emplace(&block, nodes_.size());
        if (!isNew) return found->second;
        const auto length = static_cast<double>(platform::characters(platform::printable(block.getName())));
        nodes_.push_back({&block, book.pageOf(&block), length * character + 2 * margin});
        return nodes_.size() - 1;
    }

    std::string text() const {
        std::string text = "digraph{rankdir=LR;nodesep=0.08;ranksep=0.9;nslimit=2;nslimit1=2;"
                           "node[shape=box,fixedsize=true,label=\"\"];";
        for (std::size_t i = 0; i < nodes_.size(); ++i)
            text += "n" + std::to_string(i) + "[width=" + number(nodes_[i].width / pointsPerInch) +
                    ",height=" + number(height / pointsPerInch) + "];";
        std::vector<State> states(nodes_.size(), State::New);
        for (std::size_t i = 0; i < nodes_.size(); ++i) addEdges(text, i, states);
        return text + "}";
    }

    // Those that close a circle are left out: Graphviz loses memory on them. They are drawn all the same.
    void addEdges(std::string& text, std::size_t from, std::vector<State>& states) const {
        if (states[from] != State::New) return;
        states[from] = State::Open;
        for (const std::size_t to : nodes_[from].targets) {
            if (states[to] == State::Open) continue;
            text += "n" + std::to_string(from) + "->n" + std::to_string(to) + ";";
            addEdges(text, to, states);
        }
        states[from] = State::Done;
    }

    void moveToOrigin() {
        double left = nodes_.front().centre.x;
        double top = nodes_.front().centre.y;
        for (const Node& node : nodes_) {
            left = std::min(left, node.centre.x - node.width / 2);
            top = std::min(top, node.centre.y - height / 2);
        }
        for (Node& node : nodes_) {
            node.centre.x += margin - left;
            node.centre.y += margin - top;
            right_ = std::max(right_, node.centre.x + node.width / 2 + margin);
            bottom_ = std::max(bottom_, node.centre.y + height / 2 + margin);
        }
    }

    std::string svg() const {
        Svg svg;
        svg.start("graph", right_, bottom_, "group", "Which blocks are mapped to which; the table below says the same");
        for (const Node& from : nodes_)
            for (const std::size_t to : from.targets) drawEdge(svg, from, nodes_[to]);
        for (const Node& node : nodes_) {
            const Centre& at = node.centre;
            svg.open("a", {{"href", node.page}});
            svg.rectangle(at.x - node.width / 2, at.y - height / 2, node.width, height, "body");
            svg.text(at.x, at.y + 4, "middle", node.block->getName(), "name");
            svg.close();
        }
        return svg.close().str();
    }

    static void drawEdge(Svg& svg, const Node& from, const Node& to) {
        const double x1 = from.centre.x + from.width / 2;
        const double x2 = to.centre.x - to.width / 2;
        const double bend = std::max(30.0, (x2 - x1) / 2);
        const auto point = [](double x, double y) { return number(x) + "," + number(y) + " "; };
        svg.add("path", {{"class", "edge"},
                         {"d", "M" + point(x1, from.centre.y) + "C" + point(x1 + bend, from.centre.y) +
                                   point(x2 - bend, to.centre.y) + point(x2, to.centre.y)}});
    }

    std::vector<Node> nodes_;
    std::map<const HDNTBlock*, std::size_t> index_;
    double right_ = 0;
    double bottom_ = 0;
};

} // namespace

std::string mappingGraphOf(const Book& book) { return MappingGraph(book).drawn(); }

} // namespace hdnt::author::guide
