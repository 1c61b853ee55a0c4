#include "author/lint/LintRows.internal.h"

namespace hdnt::author {

using C = LintCode;
static constexpr Severity E = Severity::error;
static constexpr Severity W = Severity::warning;

static constexpr LintRow rows[] = {
    {C::unknownBlock,
     {"unknown-block", E, "no block \"%\" for instance \"%\"%",
      "A mapping has an instance of a block that neither the library, nor its parents, nor the common "
      "library has. When the block is in another library, name that with --parent.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NAT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})"}},
    {C::unknownInstance,
     {"unknown-instance", E, "no instance \"%\"%",
      "A mapping names an instance that is not there, or only in another branch.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "b" "I";
    connect "in" : "a" "I";
    signal "out" : "a" "O", "O";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})"}},
    {C::unknownPin,
     {"unknown-pin", E, "block \"%\" has no pin \"%\"%", "A mapping names a pin or a bit that the block does not have.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I", "a" "J";
    signal "out" : "a" "O", "O";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})"}},
    {C::unknownProperty,
     {"unknown-property", E, "block \"%\"% has no property \"%\"%",
      "A mapping sets or asks for a property that the block, or its pin, does not have.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    assign block property "a" "DELAI" 1;
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    assign block property "a" "DELAY" 1;
  }
})"}},
    {C::propertyType,
     {"property-type", E, "property \"%\" is of type %, which % does not take",
      "A mapping asks for a property by a function for another type; the expansion fails there.",
      R"(library "example" {
  function int intProperty(string);
  function double doubleProperty(string);
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    property double "WAIT" { min = 0.0, max = 1.0 }
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    assign block property "a" "DELAY" intProperty("WAIT");
  }
})",
      R"(library "example" {
  function int intProperty(string);
  function double doubleProperty(string);
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    property int "WAIT" { min = 0, max = 1 }
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    assign block property "a" "DELAY" intProperty("WAIT");
  }
})"}},
    {C::valueRefused,
     {"value-refused", E, "%", "A mapping gives a property a value that it refuses.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { min = 0, max = 3 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    assign block property "a" "DELAY" 4;
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { min = 0, max = 3 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    assign block property "a" "DELAY" 3;
  }
})"}},
    {C::duplicateInstance,
     {"duplicate-instance", E, "there are two instances \"%\"",
      "Two instances of a mapping have one name; references find the first one.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})"}},
    {C::duplicateSignal,
     {"duplicate-signal", W, "there are two signals \"%\"",
      "Two signals of a mapping have one name; they are one signal.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    signal "out";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})"}},
    {C::pinOnTwoSignals,
     {"pin-on-two-signals", E, "pin % is on the signals \"%\" and \"%\"",
      "A pin is connected to two signals, which joins them.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    pin "P" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    inst "b" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    signal "more" : "a" "O", "b" "I";
    signal "last" : "b" "O", "P";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    pin "P" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    inst "b" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O", "b" "I";
    signal "last" : "b" "O", "P";
  }
})"}},
    {C::widthMismatch,
     {"width-mismatch", E, "bus % pins meets on signal \"%\" bus % pins", "A signal joins buses of different widths.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I[7:0]" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I[3:0]" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I[7:0]" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I[7:0]" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})"}},
    {C::oppositeOrder,
     {"opposite-order", W, "bus % meets on signal \"%\" bus %, which counts the other way",
      "A signal joins a bus that counts downwards with one that counts upwards: its bits are reversed.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I[7:0]" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I[0:7]" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I[7:0]" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I[7:0]" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})"}},
    {C::lowerMaturity,
     {"lower-maturity", W, "instance \"%\": block \"%\" is %, less mature than \"%\"",
      "A block is made of one that is less mature than itself.",
      R"(library "example" {
  block "EXAMPLE_NOT" { maturityLevel = beta; pin "I" input; pin "O" output; }
  block "EXAMPLE_PAIR" {
    primgroup = "LOGIC";
    maturityLevel = production;
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { maturityLevel = beta; pin "I" input; pin "O" output; }
  block "EXAMPLE_PAIR" {
    primgroup = "LOGIC";
    maturityLevel = beta;
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})"}},
    {C::deprecatedBlock,
     {"deprecated-block", W, "instance \"%\": block \"%\" is %, and \"%\" is not",
      "A block is made of one that is to go.",
      R"(library "example" {
  block "EXAMPLE_NOT" { maturityLevel = deprecated; pin "I" input; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { maturityLevel = beta; pin "I" input; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})"}},
    {C::testBlock,
     {"test-block", W, "instance \"%\": block \"%\" is %, and \"%\" is not",
      "A block is made of one with the test flag, which is not there unless the test features are on.",
      R"(library "example" {
  block "EXAMPLE_NOT" { test = true; pin "I" input; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})"}},
    {C::otherArchitecture,
     {"other-architecture", W, "instance \"%\": block \"%\" is not there for %, where \"%\" is",
      "A block is made of one that the configuration gives to other architectures only.",
      R"(library "example" {
  block "CHECK_CODE_ENCODE_32" { pin "I" input; pin "O" output; }
  block "ADD_CHAIN_8" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "CHECK_CODE_ENCODE_32";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})",
      R"(library "example" {
  block "MEM_BLOCK_1P_1K" { pin "I" input; pin "O" output; }
  block "ADD_CHAIN_8" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "MEM_BLOCK_1P_1K";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
  }
})"}},
    {C::brokenMapLibrary,
     {"broken-map-library", E, "map library of block \"%\", architecture \"%\": %",
      "The map library of a block has errors, so that the block has no mapping.", "", ""}},
};
static_assert(areInOrder(rows, C::brokenMapLibrary));

std::span<const LintRow> referenceRows() { return rows; }

} // namespace hdnt::author
