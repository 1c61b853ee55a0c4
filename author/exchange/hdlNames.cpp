#include "author/exchange/hdlNames.internal.h"
#include "hdnt/platform/HSTStringUtils.h"

#include <algorithm>

namespace hdnt::author {

namespace {

// Each word between blanks: those of Verilog 2005, what SystemVerilog adds, and those of VHDL 2008.
constexpr std::string_view verilogWords =
    " always and assign automatic begin buf bufif0 bufif1 case casex casez cell cmos config deassign "
    "default defparam design disable edge else end endcase endconfig endfunction endgenerate endmodule "
    "endprimitive endspecify endtable endtask event for force forever fork function generate genvar "
    "highz0 highz1 if ifnone incdir include initial inout input instance integer join large liblist "
    "library localparam macromodule medium module nand negedge nmos nor noshowcancelled not notif0 notif1 "
    "or output parameter pmos posedge primitive pull0 pull1 pulldown pullup pulsestyle_ondetect "
    "pulsestyle_onevent rcmos real realtime reg release repeat rnmos rpmos rtran rtranif0 rtranif1 "
    "scalared showcancelled signed small specify specparam strong0 strong1 supply0 supply1 table task "
    "time tran tranif0 tranif1 tri tri0 tri1 triand trior trireg unsigned use uwire vectored wait wand "
    "weak0 weak1 while wire wor xnor xor ";
constexpr std::string_view systemVerilogWords =
    " accept_on alias always_comb always_ff always_latch assert assume before bind bins binsof bit break "
    "byte chandle checker class clocking const constraint context continue cover covergroup coverpoint "
    "cross dist do endchecker endclass endclocking endgroup endinterface endpackage endprogram "
    "endproperty endsequence enum eventually expect export extends extern final first_match foreach "
    "forkjoin global iff ignore_bins illegal_bins implements implies import inside int interconnect "
    "interface intersect join_any join_none let local logic longint matches modport nettype new nexttime "
    "null package packed priority program property protected pure rand randc randcase randsequence ref "
    "reject_on restrict return s_always s_eventually s_nexttime s_until s_until_with sequence shortint "
    "shortreal soft solve static string strong struct super sync_accept_on sync_reject_on tagged this "
    "throughout timeprecision timeunit type typedef union unique unique0 until until_with untyped var "
    "virtual void wait_order weak wildcard with within ";
constexpr std::string_view vhdlWords =
    " abs access after alias all and architecture array assert assume assume_guarantee attribute begin "
    "block body buffer bus case component configuration constant context cover default disconnect downto "
    "else elsif end entity exit fairness file for force function generate generic group guarded if impure "
    "in inertial inout is label library linkage literal loop map mod nand new next nor not null of on "
    "open or others out package parameter port postponed procedure process property protected pure range "
    "record register reject release rem report restrict restrict_guarantee return rol ror select sequence "
    "severity shared signal sla sll sra srl strong subtype then to transport type unaffected units until "
    "use variable vmode vprop vunit wait when while with xnor xor ";
constexpr std::string_view vhdlDeclared =
    " bit_vector boolean character false ieee integer real std std_logic std_logic_1164 std_logic_vector string true "
    "work ";

bool isAmong(std::string_view words, std::string_view name) {
    return words.find(" " + std::string(name) + " ") != std::string_view::npos;
}

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isLetterOrDigit(char c) { return isLetter(c) || (c >= '0' && c <= '9'); }

// Characters of `others`, and all but printed ASCII, in hexadecimal digits.
std::string without(std::string_view others, std::string_view name, const char* before = "\\x",
                    const char* behind = "") {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string shown;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (c >= ' ' && c <= '~' && others.find(c) == std::string_view::npos) shown += c;
        else (((shown += before) += digits[byte / 16]) += digits[byte % 16]) += behind;
    }
    return shown;
}

std::string_view orUnnamed(std::string_view name) { return name.empty() ? "unnamed" : name; }

bool isPlainVerilog(std::string_view name) {
    const auto isInside = [](char c) { return isLetterOrDigit(c) || c == '_' || c == '$'; };
    return !name.empty() && (isLetter(name[0]) || name[0] == '_') && std::ranges::all_of(name, isInside) &&
           !isAmong(verilogWords, name) && !isAmong(systemVerilogWords, name);
}

bool isPlainVhdl(std::string_view name) {
    const std::string lower = HSTStringUtils::to_lower_copy(std::string(name));
    const auto isInside = [](char c) { return isLetterOrDigit(c) || c == '_'; };
    return !name.empty() && isLetter(name[0]) && name.back() != '_' && name.find("__") == std::string_view::npos &&
           std::ranges::all_of(name, isInside) && !isAmong(vhdlWords, lower) && !isAmong(vhdlDeclared, lower);
}

} // namespace

std::string verilogName(std::string_view name) {
    if (isPlainVerilog(name)) return std::string(name);
    const std::string shown = without(" `", orUnnamed(name)); // some readers look for macros inside of names, too
    return isPlainVerilog(shown) ? shown : "\\" + shown + " ";
}

std::string VerilogNames::add(const std::string& name) {
    int& number = numbers_.try_emplace(name, 1).first->second;
    std::string shown = verilogName(name);
    while (!take(shown)) shown = verilogName(name + "_" + std::to_string(++number));
    return shown;
}

std::string vhdlName(std::string_view name) {
    const std::string_view shown = orUnnamed(name);
    return isPlainVhdl(shown) ? std::string(shown) : vhdlExtendedName(shown);
}

std::string vhdlExtendedName(std::string_view name) {
    std::string extended = "\\";
    for (const char c : asciiOf(orUnnamed(name))) extended.append(c == '\\' ? 2 : 1, c);
    return extended + "\\";
}

std::string unescapedVerilogName(std::string_view name) {
    const std::string shown = verilogName(name);
    return shown.front() == '\\' ? shown.substr(1, shown.size() - 2) : shown;
}

std::string libertyName(std::string_view name) {
    const std::string_view first = name.starts_with('$') ? "$" : "";
    return without(first, name.substr(0, first.size()), "_x", "_") +
           without(" `*\"\\[]", orUnnamed(name).substr(first.size()), "_x", "_");
}

std::string asciiOf(std::string_view text, std::string_view others) { return without(others, text); }

} // namespace hdnt::author
