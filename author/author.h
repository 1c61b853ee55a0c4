#pragma once

// Everything for programs that serve those who write libraries.
#include "author/exchange/blocks.h"
#include "author/expansion/ExpansionText.h"
#include "author/expansion/outcomes.h"
#include "author/format/HDNTFormatter.h"
#include "author/judge/judge.h"
#include "author/lint/Baseline.h"
#include "author/lint/RuleControl.h"
#include "author/lint/Waivers.h"
#include "author/lint/lint.h"
#include "author/lint/nearestNames.h"
#include "author/project/Project.h"
#include "author/project/parents.h"
#include "author/server/serve.h"
#include "author/syntax/SoundTexts.h"
#include "author/syntax/SyntaxTree.h"
