#include "author/lint/LintRows.internal.h"

namespace hdnt::author {

using C = LintCode;
static constexpr Severity W = Severity::warning;
static constexpr Severity N = Severity::note;

static constexpr LintRow rows[] = {
    {C::defaultOutside,
     {"default-outside", W, "default % of % is %",
      "The default of a property is outside its range, or is not one of its values; a property without a "
      "default has 0. Declare a default that the property may take.",
      R"(library "example" {
  block "EXAMPLE_DELAY" {
    pin "O" output;
    property int "STEPS" { min = 1, max = 15, default = 16 }
  }
})",
      R"(library "example" {
  block "EXAMPLE_DELAY" {
    pin "O" output;
    property int "STEPS" { min = 1, max = 15, default = 15 }
  }
})"}},
    {C::minAboveMax,
     {"min-above-max", W, "minimum % of % is above its maximum %",
      "The minimum of a property is above its maximum, so that no value is allowed. Swap them.",
      R"(library "example" {
  block "EXAMPLE_DELAY" {
    pin "O" output;
    property int "STEPS" { min = 15, max = 1, default = 1 }
  }
})",
      R"(library "example" {
  block "EXAMPLE_DELAY" {
    pin "O" output;
    property int "STEPS" { min = 1, max = 15, default = 1 }
  }
})"}},
    {C::textTooWide,
     {"text-too-wide", W, "% % of % is wider than % bits",
      "A default, bound or listed value has more bits than its property or than its own prefix, or a prefix "
      "that says so. Widen the property or shorten the text.",
      R"(library "example" {
  block "EXAMPLE_TABLE" {
    pin "O" output;
    property 4'h "INIT" { default = 8'h1F }
  }
})",
      R"(library "example" {
  block "EXAMPLE_TABLE" {
    pin "O" output;
    property 4'h "INIT" { default = 4'hF }
  }
})"}},
    {C::bitTextForm,
     {"bit-text-form", W, "% % of % is no hexadecimal or binary number",
      "A default, bound or listed value of a hexadecimal or binary property is no number, since it has no "
      "digits; as a bound it stops nothing. Write the digits.",
      R"(library "example" {
  block "EXAMPLE_TABLE" {
    pin "O" output;
    property 8'h "INIT" { default = 8'h }
  }
})",
      R"(library "example" {
  block "EXAMPLE_TABLE" {
    pin "O" output;
    property 8'h "INIT" { default = 8'h00 }
  }
})"}},
    {C::needlessBound,
     {"needless-bound", N, "% % of % is what its width allows anyway",
      "A bound of a hexadecimal property says what its width says anyway. Leave it out, so that the bounds that are "
      "there mean something; but a maximum needs a minimum before it.",
      R"(library "example" {
  block "EXAMPLE_TABLE" {
    pin "O" output;
    property 8'h "INIT" { min = 8'h01, max = 8'hFF, default = 8'h01 }
  }
})",
      R"(library "example" {
  block "EXAMPLE_TABLE" {
    pin "O" output;
    property 8'h "INIT" { min = 8'h01, default = 8'h01 }
  }
})"}},
    {C::pinLowerCase,
     {"pin-lower-case", W, "% has lower-case letters and cannot be looked up by name",
      "A pin's name has lower-case letters. A look-up turns the name it is asked for into upper case, so that "
      "the pin is never found. Write it in upper case.",
      R"(library "example" {
  block "EXAMPLE_TIE" {
    pin "o" output;
  }
})",
      R"(library "example" {
  block "EXAMPLE_TIE" {
    pin "O" output;
  }
})"}},
    {C::pinPropertyCase,
     {"pin-property-case", W, "properties \"%\" and \"%\" of % differ in case only",
      "Two properties of a pin differ in case only. They are looked up as written, while those of blocks are "
      "not. Rename one.",
      R"(library "example" {
  block "EXAMPLE_PAD" {
    pin "O" output {
      property int "LOAD" { default = 0 }
      property int "Load" { default = 0 }
    }
  }
})",
      R"(library "example" {
  block "EXAMPLE_PAD" {
    pin "O" output {
      property int "LOAD" { default = 0 }
      property int "GREATEST_LOAD" { default = 0 }
    }
  }
})"}},
    {C::similarNames,
     {"similar-names", W, "% \"%\" and \"%\" differ only in %",
      "Two names of one block differ in case only, or in letters that look alike (O and 0, I, l and 1).",
      R"(library "example" {
  block "EXAMPLE_GATE" {
    pin "IO" input;
    pin "I0" input;
    pin "O" output;
  }
})",
      R"(library "example" {
  block "EXAMPLE_GATE" {
    pin "I1" input;
    pin "I0" input;
    pin "O" output;
  }
})"}},
    {C::unregisteredBlock,
     {"unregistered-block", W, "block \"%\" is not in the table of cells",
      "A block's name is not in the table of cells, where case counts: its type number is not a fixed one, and "
      "mappings by themselves do not find it. Correct the name, or give the cell a number in a table for "
      "--cells.",
      R"(library "example" {
  block "MY_PULSE_SHAPER" {
    pin "O" output;
  }
})",
      R"(library "example" {
  block "TIE_0" {
    pin "O" output;
  }
})"}},
    {C::noGroup,
     {"no-group", N, "block \"%\" is in production and has no group",
      "A block for production has no primgroup, so that it is in no list by groups.",
      R"(library "example" {
  block "EXAMPLE_TIE" {
    maturityLevel = production;
    pin "O" output;
  }
})",
      R"(library "example" {
  block "EXAMPLE_TIE" {
    primgroup = "LOGIC:TIE";
    maturityLevel = production;
    pin "O" output;
  }
})"}},
    {C::noDescription,
     {"no-description", N, "property \"%\" of block \"%\" is in production and has no description",
      "A property that users see, of a block for production, has a description neither in the text nor in the "
      "configuration.",
      R"(library "example" {
  block "EXAMPLE_TIE" {
    primgroup = "LOGIC:TIE";
    maturityLevel = production;
    pin "O" output;
    property bool "HIGH" { default = true }
  }
})",
      R"(library "example" {
  block "EXAMPLE_TIE" {
    primgroup = "LOGIC:TIE";
    maturityLevel = production;
    pin "O" output;
    property bool "HIGH" { default = true, description = "The level of the output." }
  }
})"}},
    {C::similarGroup,
     {"similar-group", W, "group \"%\" of block \"%\" is hardly \"%\", which % have",
      "A group is one letter away from another one that more blocks have.",
      R"(library "example" {
  block "EXAMPLE_AND" { primgroup = "LOGIC"; pin "O" output; }
  block "EXAMPLE_OR"  { primgroup = "LOGIC"; pin "O" output; }
  block "EXAMPLE_XOR" { primgroup = "LOGIK"; pin "O" output; }
})",
      R"(library "example" {
  block "EXAMPLE_AND" { primgroup = "LOGIC"; pin "O" output; }
  block "EXAMPLE_OR"  { primgroup = "LOGIC"; pin "O" output; }
  block "EXAMPLE_XOR" { primgroup = "LOGIC"; pin "O" output; }
})"}},
};
static_assert(areInOrder(rows, C::similarGroup));

std::span<const LintRow> declarationRows() { return rows; }

} // namespace hdnt::author
