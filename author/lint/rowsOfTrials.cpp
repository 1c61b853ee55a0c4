#include "author/lint/LintRows.internal.h"

namespace hdnt::author {

using C = LintCode;
static constexpr Severity E = Severity::error;
static constexpr Severity W = Severity::warning;

static constexpr LintRow rows[] = {
    {C::mappingProblem,
     {"mapping-problem", E, "%%",
      "The mapping cannot be applied for some setting: a value that cannot be computed, or that a property "
      "refuses.",
      R"(library "example" {
  function int intProperty(string);
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    property int "RATE" { min = 1, max = 8, default = 4 }
    property int "STEP" { min = 0, max = 8, default = 1 }
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    if (intProperty("RATE") / intProperty("STEP") > 2)
      assign block property "a" "DELAY" 1;
  }
})",
      R"(library "example" {
  function int intProperty(string);
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    property int "RATE" { min = 1, max = 8, default = 4 }
    property int "STEP" { min = 1, max = 8, default = 1 }
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    if (intProperty("RATE") / intProperty("STEP") > 2)
      assign block property "a" "DELAY" 1;
  }
})"}},
    {C::twoDrivers,
     {"two-drivers", E, "signal \"%\" has two drivers: % and %%", "Two outputs drive one signal.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    inst "b" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I", "b" "I";
    signal "out" : "a" "O", "b" "O", "O";
  }
})",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    inst "b" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "mid" : "a" "O", "b" "I";
    signal "out" : "b" "O", "O";
  }
})"}},
    {C::undrivenSignal,
     {"undriven-signal", W, "signal \"%\" reaches % and has no driver%",
      "A signal leads to pins that want a value, and nothing gives it one.",
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
    signal "mid" : "b" "I";
    signal "out" : "a" "O", "O";
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
    signal "out" : "a" "O", "O";
    connect "out" : "b" "I";
    signal "last" : "b" "O", "P";
  }
})"}},
    {C::singlePinSignal,
     {"single-pin-signal", W, "signal \"%\" joins nothing in any setting",
      "A signal has one pin or none, whatever the setting.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    signal "spare";
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
    {C::openInput,
     {"open-input", W, "input % of instance \"%\" of block \"%\" is open%",
      "An input that has to be connected, or has no value for being open, is not connected.",
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
    signal "in"  : "I", "a" "I", "b" "I";
    signal "out" : "a" "O", "O";
    signal "last" : "b" "O", "P";
  }
})"}},
    {C::undrivenOutput,
     {"undriven-output", W, "nothing drives output % of block \"%\"%",
      "An output of the mapped block is connected to nothing.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    pin "P" output;
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
    pin "P" output;
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O", "P";
  }
})"}},
    {C::unusedInput,
     {"unused-input", W, "input % of block \"%\" goes nowhere in any setting",
      "An input of the mapped block is connected to nothing, whatever the setting.",
      R"(library "example" {
  block "EXAMPLE_NOT" { pin "I" input mustConnect; pin "O" output; }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "J" input;
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
    {C::branchNeverTaken,
     {"branch-never-taken", W, "% is never taken: the condition never % in %",
      "A branch of a mapping is not reached in any setting that was tried.",
      R"(library "example" {
  function int intProperty(string);
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    property int "STEP" { min = 1, max = 8, default = 1 }
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    if (intProperty("STEP") > 8)
      assign block property "a" "DELAY" intProperty("STEP");
  }
})",
      R"(library "example" {
  function int intProperty(string);
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    property int "STEP" { min = 1, max = 8, default = 1 }
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    if (intProperty("STEP") > 7)
      assign block property "a" "DELAY" intProperty("STEP");
  }
})"}},
    {C::conditionAlwaysTrue,
     {"condition-always-true", W, "the condition holds in %",
      "A condition without an else branch holds in every setting that was tried: it decides nothing.",
      R"(library "example" {
  function int intProperty(string);
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    property int "STEP" { min = 1, max = 8, default = 1 }
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    if (intProperty("STEP") > 0)
      assign block property "a" "DELAY" intProperty("STEP");
  }
})",
      R"(library "example" {
  function int intProperty(string);
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    property int "STEP" { min = 1, max = 8, default = 1 }
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    if (intProperty("STEP") > 1)
      assign block property "a" "DELAY" intProperty("STEP");
  }
})"}},
    {C::propertyWithoutEffect,
     {"property-without-effect", W, "property \"%\" changes nothing in what block \"%\" becomes",
      "The mapping asks for a property, and becomes the same for each of its values. The setting of the "
      "user is lost.",
      R"(library "example" {
  function int intProperty(string);
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    property int "STEP" { min = 1, max = 8, default = 1 }
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    assign block property "a" "DELAY" intProperty("STEP") * 0;
  }
})",
      R"(library "example" {
  function int intProperty(string);
  block "EXAMPLE_NOT" { pin "I" input; pin "O" output; property int "DELAY" { default = 0 } }
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
    property int "STEP" { min = 1, max = 8, default = 1 }
  } mapsto {
    inst "a" "EXAMPLE_NOT";
    signal "in"  : "I", "a" "I";
    signal "out" : "a" "O", "O";
    assign block property "a" "DELAY" intProperty("STEP") * 2;
  }
})"}},
    {C::mappingCircle,
     {"mapping-circle", E, "mappings lead in a circle: %",
      "A block becomes blocks of which one becomes that block again: there is no end to it.",
      R"(library "example" {
  block "EXAMPLE_PAIR" {
    pin "I" input;
    pin "O" output;
  } mapsto {
    inst "a" "EXAMPLE_PAIR";
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
};
static_assert(areInOrder(rows, C::mappingCircle));

std::span<const LintRow> trialRows() { return rows; }

} // namespace hdnt::author
