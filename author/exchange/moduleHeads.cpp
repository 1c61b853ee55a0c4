#include "author/exchange/moduleHeads.internal.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace hdnt::author {

namespace {

using Words = std::set<std::string_view>;

const Words declarations = {"input", "output", "inout", "parameter"};
const Words openers = {"begin", "case", "casex", "casez", "fork", "function", "generate", "specify", "task"};
const Words closers = {"end",      "endcase",     "endfunction", "endgenerate", "endspecify",
                       "endtask",  "endclocking", "endproperty", "endsequence", "endclass",
                       "endgroup", "endchecker",  "join",        "join_any",    "join_none"};
// Names in the language without them.
const Words systemOpeners = {"checker", "class", "clocking", "covergroup", "property", "randcase", "sequence"};
// Behind these an opener opens nothing.
const Words users = {"assert", "assume", "cover", "default", "disable", "expect", "restrict", "typedef", "wait"};
// What stands for itself, up to its semicolon.
const Words declarers = {"export", "extern", "import"};

// By how much of what follows belongs to them.
const Words directivesAlone = {"`celldefine", "`else", "`endcelldefine", "`endif", "`resetall"};
const Words directivesWithWord = {"`default_nettype", "`elsif", "`ifdef", "`ifndef", "`include", "`undef"};
const Words directivesDropped = {"`begin_keywords",
                                 "`delay_mode_distributed",
                                 "`delay_mode_path",
                                 "`delay_mode_unit",
                                 "`delay_mode_zero",
                                 "`disable_portfaults",
                                 "`enable_portfaults",
                                 "`end_keywords",
                                 "`line",
                                 "`nosuppress_faults",
                                 "`nounconnected_drive",
                                 "`pragma",
                                 "`suppress_faults",
                                 "`timescale",
                                 "`undefineall",
                                 "`unconnected_drive",
                                 "`uselib"};

const std::map<std::string_view, std::string_view> equals = {
    {"macromodule", "module"}, {"realtime", "real"}, {"time", "[63:0]"}, {"tri0", "wire"},
    {"tri1", "wire"},          {"trireg", "wire"},   {"uwire", "wire"},
};

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '$'; }
bool isInWord(char c) { return isLetter(c) || (c >= '0' && c <= '9'); }
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }

/// Tokens one by one, without blanks and comments. A directive is its name with the backquote.
class Tokens {
public:
    explicit Tokens(std::string_view text) : text_(text) {}

    /// Empty at the end.
    std::string_view next() {
        skipBlanks();
        const std::size_t begin = at_;
        if (at_ == text_.size()) return {};
        const char first = text_[at_++];
        if (first == '"') endText();
        else if (first == '\\') skipWhile([](char c) { return !isBlank(c); });
        else if (first == '`' || isInWord(first)) skipWhile(isInWord);
        return text_.substr(begin, at_ - begin);
    }
    /// What is left of the line, and of those that it goes on in, without comments.
    std::string_view restOfLine() {
        const std::size_t begin = at_;
        while (at_ < text_.size() && text_[at_] != '\n' && !isComment()) at_ += text_[at_] == '\\' ? 2 : 1;
        at_ = std::min(at_, text_.size());
        return text_.substr(begin, at_ - begin);
    }

private:
    template <typename Holds>
    void skipWhile(Holds&& holds) {
        while (at_ < text_.size() && holds(text_[at_])) ++at_;
    }

    bool isComment() const {
        const std::string_view mark = text_.substr(at_, 2);
        return mark == "//" || mark == "/*";
    }

    void skipBlanks() {
        for (skipWhile(isBlank); at_ < text_.size() && isComment(); skipWhile(isBlank)) {
            const bool isLine = text_[at_ + 1] == '/';
            const std::size_t end = text_.find(isLine ? "\n" : "*/", at_ + 2);
            at_ = end == text_.npos ? text_.size() : end + (isLine ? 0 : 2);
        }
    }

    void endText() {
        while (at_ < text_.size() && text_[at_] != '"' && text_[at_] != '\n') at_ += text_[at_] == '\\' ? 2 : 1;
        at_ = std::min(at_ + 1, text_.size());
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

class Heads {
public:
    Heads(std::string_view text, bool isSystemVerilog)
        : text_(text), tokens_(text), openers_(openers), result_(text.size(), ' ') {
        if (isSystemVerilog) openers_.insert(systemOpeners.begin(), systemOpeners.end());
        for (std::size_t i = 0; i < text.size(); ++i)
            if (text[i] == '\n') result_[i] = '\n';
    }

    std::string text() {
        for (std::string_view token; !(token = tokens_.next()).empty();) {
            if (token[0] == '`' && isDirective(token)) continue;
            take(token);
            state_.before = token;
        }
        endModule();
        return withEquals();
    }

private:
    enum class In { File, Dropped, Head, Body, Port, Item, Declarer };

    /// Else branches begin with that of their if.
    struct State {
        In in = In::File;
        int depth = 0; ///< of what is open in the body
        std::string_view before;
    };

    /// A function, or a statement of constants. Needed when something is that mentions it.
    struct Item {
        std::vector<std::string_view> tokens;
        Words names;
    };

    void keep(std::string_view token) {
        if (token.empty()) return; // the text ends
        std::copy(token.begin(), token.end(), result_.begin() + (token.data() - text_.data()));
        const auto equal = equals.find(token);
        if (equal != equals.end()) equals_.emplace_back(token, equal->second);
    }

    bool isDirective(std::string_view token) {
        if (token == "`define") {
            keep(token);
            const std::string_view rest = tokens_.restOfLine();
            keep(rest);
            Tokens words(rest);
            for (std::string_view word; !(word = words.next()).empty();) mentionedByMacros_.insert(word);
            return true;
        }
        if (directivesDropped.contains(token)) return tokens_.restOfLine(), true;
        const bool hasWord = directivesWithWord.contains(token);
        if (!hasWord && !directivesAlone.contains(token)) return false;
        const bool isKept = token != "`include" || state_.depth == 0;
        if (isKept) keep(token);
        if (hasWord && isKept) keep(tokens_.next());
        else if (hasWord) tokens_.next();
        branch(token);
        return true;
    }

    void branch(std::string_view token) {
        if (token == "`ifdef" || token == "`ifndef") branches_.push_back(state_);
        if (branches_.empty()) return;
        if (token == "`else" || token == "`elsif") state_ = branches_.back();
        if (token == "`endif") branches_.pop_back();
    }

    void take(std::string_view token) {
        switch (state_.in) {
        case In::File: return takeOutside(token);
        case In::Dropped:
            if (token == "endprimitive" || token == "endconfig") state_.in = In::File;
            return;
        case In::Head:
            keepMentioned(token);
            if (token == ";") state_.in = In::Body;
            return;
        case In::Port: keepMentioned(token); [[fallthrough]];
        case In::Declarer:
            if (token == ";") state_.in = In::Body;
            return;
        case In::Item: return takeOfItem(token);
        case In::Body: return takeInside(token);
        }
    }

    void takeOutside(std::string_view token) {
        if (token == "primitive" || token == "config") {
            state_.in = In::Dropped;
            return;
        }
        if (!beginsModule(token)) keep(token);
    }

    // Also inside of one that does not end: its reader says so.
    bool beginsModule(std::string_view token) {
        if (token != "module" && token != "macromodule") return false;
        state_ = {In::Head, 0, token};
        keep(token);
        return true;
    }

    void keepMentioned(std::string_view token) {
        keep(token);
        mentioned_.insert(token);
    }

    void takeInside(std::string_view token) {
        if (token == "endmodule") {
            keep(token);
            state_ = {};
            return endModule();
        }
        if (beginsModule(token)) return;
        if (closers.contains(token)) state_.depth = std::max(state_.depth - 1, 0);
        else if (state_.depth == 0 && takesDeclaration(token)) return;
        else if (openers_.contains(token) && !users.contains(state_.before)) ++state_.depth;
    }

    bool takesDeclaration(std::string_view token) {
        if (declarations.contains(token)) {
            state_.in = In::Port;
            keep(token);
        } else if (token == "localparam" || token == "function") {
            state_.in = In::Item;
            items_.push_back({{token}, {}});
        } else if (declarers.contains(token)) {
            state_.in = In::Declarer;
        } else {
            return false;
        }
        return true;
    }

    // A function is named before its parenthesis or semicolon, constants before their signs.
    void takeOfItem(std::string_view token) {
        if (items_.empty()) items_.emplace_back(); // the module ended in the branch before
        Item& item = items_.back();
        item.tokens.push_back(token);
        const bool isFunction = item.tokens.front() == "function";
        const bool isNamed = isFunction ? item.names.empty() && (token == "(" || token == ";") : token == "=";
        if (isNamed) item.names.insert(state_.before);
        if (token == (isFunction ? "endfunction" : ";")) state_.in = In::Body;
    }

    bool isNeeded(const Item& item) const {
        const auto isMentioned = [&](std::string_view name) {
            return mentioned_.contains(name) || mentionedByMacros_.contains(name);
        };
        return std::ranges::any_of(item.names, isMentioned);
    }

    void endModule() {
        for (bool isMore = true; isMore;) {
            isMore = false;
            for (Item& item : items_) {
                if (item.tokens.empty() || !isNeeded(item)) continue;
                for (const std::string_view token : std::exchange(item.tokens, {})) keepMentioned(token);
                isMore = true;
            }
        }
        items_.clear();
        mentioned_.clear();
    }

    std::string withEquals() {
        std::ranges::sort(equals_, {}, [](const auto& one) { return one.first.data(); });
        std::string text;
        std::size_t at = 0;
        for (const auto& [token, equal] : equals_) {
            const auto begin = static_cast<std::size_t>(token.data() - text_.data());
            text.append(result_, at, begin - at).append(equal);
            at = begin + token.size();
        }
        return text.append(result_, at);
    }

    std::string_view text_;
    Tokens tokens_;
    Words openers_;
    std::string result_;
    State state_;
    std::vector<State> branches_;
    std::vector<Item> items_;
    Words mentioned_;
    Words mentionedByMacros_;
    std::vector<std::pair<std::string_view, std::string_view>> equals_;
};

} // namespace

std::string moduleHeads(std::string_view text, bool isSystemVerilog) { return Heads(text, isSystemVerilog).text(); }

} // namespace hdnt::author
