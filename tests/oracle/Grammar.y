/* The law of the language: what the library's parser has to accept, where it has to find the first error, in which order
   it has to have things built, and how deep a text may nest. The numbers of tokens and rules are part of the interface. */

%define api.prefix {HDNTParser}
%define api.token.prefix {TOKEN_}
%define api.value.type {law::Value}
%define api.location.type {yyltype}
%define parse.trace
%locations
%expect 0

%initial-action { law::beginParse(); }

%code top {
#include "tests/oracle/GrammarActions.h"
}

%token T_Library 258 T_Block 259 T_Property 260 T_Pin 261 T_Int 262 T_String 263 T_Bool 264 T_End 265 T_Input 266
%token T_Output 267 T_Bidir 268 T_Null 269 T_Double 270 T_BitHex 271 T_PinList 272
%token <text> T_Identifier 273 T_StringConstant 274 T_HexConstant 275 T_BinaryConstant 276
%token <intValue> T_IntConstant 277
%token <doubleValue> T_DoubleConstant 278
%token <boolValue> T_BoolConstant 279
%token T_Default 280 T_Min 281 T_Max 282 T_Precision 283 T_MapTo 284 T_Inst 285 T_Connect 286 T_Assign 287
%token T_Signal 288 T_Function 289 T_If 290 T_Else 291 T_GreaterEqual 292 T_LessEqual 293 T_EqualTo 294
%token T_NotEqual 295 T_AndAnd 296 T_OrOr 297 T_ModifiedBy 298 T_Description 299 T_Data 300 T_Clock 301
%token T_Enable 302 T_Reset 303 T_SetReset 304 T_Simulation 305 T_TieLow 306 T_TieHigh 307 T_TieSpecial 308
%token T_Untie 309 T_Units 310 T_Values 311 T_Internal 312 T_Test 313 T_PrimGroup 314 T_ConstraintsOnly 315
%token T_MaturityLevel 316 T_Early 317 T_Beta 318 T_Production 319 T_Deprecated 320 T_ExpandTo 321 T_Set 322
%token T_Clear 323 T_Preset 324 T_WriteEnable 325 T_RetargetTo 326 T_Mixed 327 T_MuxControl 328
%token T_MustConnect 329 T_Active 330 T_Abstract 331

/* Operators of mapping expressions, weakest first. */
%nonassoc OPTELSE
%nonassoc T_Else
%left T_OrOr
%left T_AndAnd
%left T_EqualTo T_NotEqual
%left '<' '>' T_LessEqual T_GreaterEqual
%left '+' '-'
%left '*' '/' '%'
%right UMINUS '!' NEGATION

%type <decl> LibraryElement
%type <decls> LibraryElementList
%type <block> Block
%type <function> FunctionDecl
%type <types> ListOfTypes CommaSeparatedTypes
%type <intValue> Type Direction PinType RequiredValue Maturity
%type <boolValue> TestPin AbstractPin
%type <entity> BlockEntity InternalFlag TestFlag MaturityLevel PrimGroup
%type <entities> BlockEntityList
%type <property> Property
%type <properties> PropertyList
%type <bus> Pin
%type <netlist> Netlist
%type <statement> NetlistEntity Inst AssignBlockProperty AssignPinProperty IfStmt OptElseStmt NetlistEntityBlock
%type <statement> Connect Signal
%type <statements> NetlistEntityList
%type <expr> Expr Constant
%type <call> FunctionCallExpr
%type <exprs> Actuals CommaSeparatedExprList
%type <pin> PinInst
%type <pins> PinInstList
%type <options> IntPropData DoublePropData BoolDefault BoolPropData IntValues IntList HexValues HexList
%type <options> BinaryValues BinaryList DoubleValues DoubleList StringValues StringPropData

%destructor { delete $$; } <decl> <block> <function> <entity> <bus> <property> <types>
%destructor { delete $$; } <netlist> <statement> <expr> <call> <pin>
%destructor { law::deleteList($$); } <statements> <exprs> <pins>
%destructor { law::deleteList($$); } <decls> <entities> <properties>
%destructor { law::deleteOptions($$); } <options>

%%

Top: LibraryDecl;

LibraryDecl: T_Library T_StringConstant '{' LibraryElementList '}' { BUILD(law::library($2, $4, @$)); };

LibraryElementList:
    LibraryElementList LibraryElement { BUILD($$ = law::append($1, $2)); }
  | %empty { BUILD($$ = law::emptyList<HDNTDecl*>()); };

LibraryElement:
    Block { $$ = $1; }
  | BlockMapping { $$ = nullptr; }
  | FunctionDecl { $$ = $1; };

FunctionDecl: T_Function Type T_Identifier '(' ListOfTypes ')' ';' { BUILD($$ = law::function($2, $3, $5, @$)); };

ListOfTypes:
    CommaSeparatedTypes
  | %empty { BUILD($$ = law::emptyList<HATAttrTypes::AttrType>()); };

CommaSeparatedTypes:
    CommaSeparatedTypes ',' Type { BUILD($$ = law::append($1, $3)); }
  | Type { BUILD($$ = law::append(nullptr, $1)); };

Type:
    T_Int { $$ = HATAttrTypes::TypeInt; }
  | T_String { $$ = HATAttrTypes::TypeString; }
  | T_Double { $$ = HATAttrTypes::TypeDouble; }
  | T_Bool { $$ = HATAttrTypes::TypeBool; }
  | T_HexConstant { $$ = HATAttrTypes::TypeBitHex; }
  | T_BinaryConstant { $$ = HATAttrTypes::TypeBitBinary; };

Block:
    T_Block T_StringConstant '{' BlockEntityList '}' T_MapTo Netlist { BUILD($$ = law::block($2, $4, $7, Section::mapsto, @$)); }
  | T_Block T_StringConstant '{' BlockEntityList '}' T_ExpandTo Netlist { BUILD($$ = law::block($2, $4, $7, Section::expandsto, @$)); }
  | T_Block T_StringConstant '{' BlockEntityList '}' T_ModifiedBy Netlist { BUILD($$ = law::block($2, $4, $7, Section::modifiedby, @$)); }
  | T_Block T_StringConstant '{' BlockEntityList '}' T_RetargetTo Netlist { BUILD($$ = law::block($2, $4, $7, Section::retargetsto, @$)); }
  | T_Block T_StringConstant '{' BlockEntityList '}' { BUILD($$ = law::block($2, $4, nullptr, Section::mapsto, @$)); };

BlockMapping:
    T_Block T_StringConstant T_MapTo Netlist { BUILD(law::mapping($2, $4, Section::mapsto, @$)); }
  | T_Block T_StringConstant T_ExpandTo Netlist { BUILD(law::mapping($2, $4, Section::expandsto, @$)); }
  | T_Block T_StringConstant T_RetargetTo Netlist { BUILD(law::mapping($2, $4, Section::retargetsto, @$)); }
  | T_Block T_StringConstant T_ModifiedBy Netlist { BUILD(law::mapping($2, $4, Section::modifiedby, @$)); };

Netlist: '{' NetlistEntityList '}' { BUILD($$ = law::netlist($2, @$)); };

NetlistEntityList:
    NetlistEntityList NetlistEntity { BUILD($$ = law::append($1, $2)); }
  | %empty { BUILD($$ = law::emptyList<HDNTNetlistEntity*>()); };

NetlistEntity:
    Inst
  | Connect
  | Signal
  | AssignBlockProperty
  | AssignPinProperty
  | IfStmt
  | NetlistEntityBlock
  | FunctionCallExpr ';' { $1->setStatement(true); $$ = $1; };

Inst: T_Inst T_StringConstant T_StringConstant ';' { BUILD($$ = law::inst($2, $3, @$)); };

AssignBlockProperty:
    T_Assign T_Block T_Property T_StringConstant T_StringConstant Expr ';' { BUILD($$ = law::assignBlockProperty($4, $5, $6, @$)); };

AssignPinProperty:
    T_Assign T_Pin T_Property PinInst ',' T_StringConstant Expr ';' { BUILD($$ = law::assignPinProperty($4, $6, $7, @$)); };

IfStmt: T_If '(' Expr ')' NetlistEntity OptElseStmt { BUILD($$ = law::ifStmt($3, $5, $6, @$)); };

OptElseStmt:
    T_Else NetlistEntity { $$ = $2; }
  | %empty %prec OPTELSE { $$ = nullptr; };

NetlistEntityBlock: '{' NetlistEntityList '}' { BUILD($$ = law::stmtBlock($2, @$)); };

Expr:
    '(' Expr ')' { $$ = $2; }
  | FunctionCallExpr { $$ = $1; }
  | Constant
  | Expr '+' Expr { BUILD($$ = law::compound($1, HDNTExpr::ADD, $3, @$)); }
  | Expr '-' Expr { BUILD($$ = law::compound($1, HDNTExpr::SUBTRACT, $3, @$)); }
  | Expr '/' Expr { BUILD($$ = law::compound($1, HDNTExpr::DIVIDE, $3, @$)); }
  | Expr '%' Expr { BUILD($$ = law::compound($1, HDNTExpr::REMAINDER, $3, @$)); }
  | Expr '*' Expr { BUILD($$ = law::compound($1, HDNTExpr::MULTIPLY, $3, @$)); }
  | Expr '>' Expr { BUILD($$ = law::compound($1, HDNTExpr::GREATER, $3, @$)); }
  | Expr '<' Expr { BUILD($$ = law::compound($1, HDNTExpr::LESS, $3, @$)); }
  | Expr T_GreaterEqual Expr { BUILD($$ = law::compound($1, HDNTExpr::GREATER_EQUAL, $3, @$)); }
  | Expr T_LessEqual Expr { BUILD($$ = law::compound($1, HDNTExpr::LESS_EQUAL, $3, @$)); }
  | Expr T_NotEqual Expr { BUILD($$ = law::compound($1, HDNTExpr::NOT_EQUAL, $3, @$)); }
  | Expr T_EqualTo Expr { BUILD($$ = law::compound($1, HDNTExpr::EQUAL, $3, @$)); }
  | Expr T_AndAnd Expr { BUILD($$ = law::compound($1, HDNTExpr::AND, $3, @$)); }
  | Expr T_OrOr Expr { BUILD($$ = law::compound($1, HDNTExpr::OR, $3, @$)); }
  | '-' Expr %prec UMINUS { BUILD($$ = law::compound(nullptr, HDNTExpr::NEGATE, $2, @$)); }
  | '!' Expr %prec NEGATION { BUILD($$ = law::compound(nullptr, HDNTExpr::NOT, $2, @$)); };

Constant:
    T_IntConstant { BUILD($$ = law::constant(static_cast<int>($1), @$)); }
  | T_StringConstant { BUILD($$ = law::constant($1, @$)); }
  | T_BoolConstant { BUILD($$ = law::constant($1 != 0, @$)); }
  | T_DoubleConstant { BUILD($$ = law::constant($1, @$)); };

FunctionCallExpr: T_Identifier '(' Actuals ')' { BUILD($$ = law::call($1, $3, @$)); };

Actuals:
    CommaSeparatedExprList
  | %empty { $$ = nullptr; };

CommaSeparatedExprList:
    CommaSeparatedExprList ',' Expr { BUILD($$ = law::append($1, $3)); }
  | Expr { BUILD($$ = law::append(nullptr, $1)); };

Connect: T_Connect T_StringConstant ':' PinInstList ';' { BUILD($$ = law::connect($2, $4, @$)); };

Signal:
    T_Signal T_StringConstant ':' PinInstList ';' { BUILD($$ = law::signal($2, $4, @$)); }
  | T_Signal T_StringConstant ';' { BUILD($$ = law::signal($2, nullptr, @$)); };

PinInstList:
    PinInstList ',' PinInst { BUILD($$ = law::append($1, static_cast<HDNTPinInst*>($3))); }
  | PinInst { BUILD($$ = law::append(nullptr, static_cast<HDNTPinInst*>($1))); };

PinInst:
    T_StringConstant T_StringConstant { BUILD($$ = law::pinInst($1, $2, @$)); }
  | T_StringConstant { BUILD($$ = law::pinInst(nullptr, $1, @$)); };

BlockEntityList:
    BlockEntityList BlockEntity { BUILD($$ = law::append($1, $2)); }
  | %empty { BUILD($$ = law::emptyList<HDNTBlockEntity*>()); };

InternalFlag: T_Internal '=' T_BoolConstant ';' { BUILD($$ = law::internalFlag($3, @$)); };
TestFlag: T_Test '=' T_BoolConstant ';' { BUILD($$ = law::testFlag($3, @$)); };
MaturityLevel: T_MaturityLevel '=' Maturity ';' { BUILD($$ = law::maturityLevel($3, @$)); };

Maturity:
    T_Early { $$ = 0; }
  | T_Beta { $$ = 1; }
  | T_Production { $$ = 2; }
  | T_Deprecated { $$ = 3; };

PrimGroup: T_PrimGroup '=' T_StringConstant ';' { BUILD($$ = law::primGroup($3, @$)); };

BlockEntity:
    Property { $$ = $1; }
  | Pin { $$ = $1; }
  | InternalFlag
  | TestFlag
  | PrimGroup
  | MaturityLevel;

PropertyList:
    PropertyList Property { BUILD($$ = law::append($1, $2)); }
  | %empty { BUILD($$ = law::emptyList<HDNTProperty*>()); };

Property:
    T_Property T_Int T_StringConstant '{' IntPropData '}' { BUILD($$ = law::property(HATAttrTypes::TypeInt, $3, $5, @$)); }
  | T_Property T_Double T_StringConstant '{' DoublePropData '}' { BUILD($$ = law::property(HATAttrTypes::TypeDouble, $3, $5, @$)); }
  | T_Property T_Bool T_StringConstant '{' BoolPropData '}' { BUILD($$ = law::property(HATAttrTypes::TypeBool, $3, $5, @$)); }
  | T_Property T_Bool T_StringConstant T_BoolConstant ';' { BUILD($$ = law::shortBoolProperty($3, $4, @$)); }
  | T_Property T_String T_StringConstant '{' StringPropData '}' { BUILD($$ = law::property(HATAttrTypes::TypeString, $3, $5, @$)); }
  | T_Property T_HexConstant T_StringConstant '{' HexList '}' { BUILD($$ = law::bitProperty(HATAttrTypes::TypeBitHex, $2, $3, $5, @$)); }
  | T_Property T_BinaryConstant T_StringConstant '{' BinaryList '}' { BUILD($$ = law::bitProperty(HATAttrTypes::TypeBitBinary, $2, $3, $5, @$)); };

IntPropData:
    IntList
  | IntList ',' T_Description '=' T_StringConstant { $$ = law::say($1, Option::description, @3); $$->description = *$5; };

DoublePropData:
    DoubleList
  | DoubleList ',' T_Description '=' T_StringConstant { $$ = law::say($1, Option::description, @3); $$->description = *$5; };

BoolDefault: T_Default '=' T_BoolConstant { BUILD($$ = law::options(Option::byDefault)); $$->boolDefault = $3; };

BoolPropData:
    BoolDefault
  | BoolPropData ',' T_Simulation '=' T_BoolConstant { $$ = law::say($1, Option::simulation, @3); $$->simulation = $5; }
  | BoolPropData ',' T_Test '=' T_BoolConstant { $$ = law::say($1, Option::test, @3); $$->test = $5; }
  | BoolPropData ',' T_ConstraintsOnly '=' T_BoolConstant { $$ = law::say($1, Option::constraintsOnly, @3); $$->constraintsOnly = $5; }
  | BoolPropData ',' T_MuxControl '=' T_BoolConstant { $$ = law::say($1, Option::muxControl, @3); $$->muxControl = $5; }
  | BoolPropData ',' T_Description '=' T_StringConstant { $$ = law::say($1, Option::description, @3); $$->description = *$5; };

IntValues:
    T_IntConstant { BUILD($$ = law::value(nullptr, static_cast<int>($1))); }
  | IntValues ',' T_IntConstant { BUILD($$ = law::value($1, static_cast<int>($3))); };

IntList:
    T_Values '{' IntValues '}' { $$ = $3; }
  | T_Min '=' T_IntConstant { BUILD($$ = law::options()); $$->ints.min = static_cast<int>($3); }
  | IntList ',' T_Max '=' T_IntConstant { $$ = law::say($1, Option::max, @3); $$->ints.max = static_cast<int>($5); }
  | IntList ',' T_Default '=' T_IntConstant { $$ = law::say($1, Option::byDefault, @3); $$->ints.byDefault = static_cast<int>($5); }
  | IntList ',' T_Simulation '=' T_BoolConstant { $$ = law::say($1, Option::simulation, @3); $$->simulation = $5; }
  | IntList ',' T_MuxControl '=' T_BoolConstant { $$ = law::say($1, Option::muxControl, @3); $$->muxControl = $5; }
  | IntList ',' T_Test '=' T_BoolConstant { $$ = law::say($1, Option::test, @3); $$->test = $5; }
  | IntList ',' T_ConstraintsOnly '=' T_BoolConstant { $$ = law::say($1, Option::constraintsOnly, @3); $$->constraintsOnly = $5; }
  | IntList ',' T_Units '=' T_StringConstant { $$ = law::say($1, Option::units, @3); $$->units = *$5; }
  | T_Simulation '=' T_BoolConstant { BUILD($$ = law::options(Option::simulation)); $$->simulation = $3; }
  | T_MuxControl '=' T_BoolConstant { BUILD($$ = law::options(Option::muxControl)); $$->muxControl = $3; }
  | T_Test '=' T_BoolConstant { BUILD($$ = law::options(Option::test)); $$->test = $3; }
  | T_ConstraintsOnly '=' T_BoolConstant { BUILD($$ = law::options(Option::constraintsOnly)); $$->constraintsOnly = $3; }
  | T_Default '=' T_IntConstant { BUILD($$ = law::options(Option::byDefault)); $$->ints.byDefault = static_cast<int>($3); };

HexValues:
    T_HexConstant { BUILD($$ = law::value(nullptr, $1)); }
  | HexValues ',' T_HexConstant { BUILD($$ = law::value($1, $3)); };

HexList:
    T_Values '{' HexValues '}' { $$ = $3; }
  | T_Min '=' T_HexConstant { BUILD($$ = law::options()); $$->textMin = *$3; }
  | HexList ',' T_Max '=' T_HexConstant { $$ = law::say($1, Option::max, @3); $$->textMax = *$5; }
  | HexList ',' T_Default '=' T_HexConstant { $$ = law::say($1, Option::byDefault, @3); $$->textDefault = *$5; }
  | HexList ',' T_Description '=' T_StringConstant { $$ = law::say($1, Option::description, @3); $$->description = *$5; }
  | HexList ',' T_Units '=' T_StringConstant { $$ = law::say($1, Option::units, @3); $$->units = *$5; }
  | HexList ',' T_Simulation '=' T_BoolConstant { $$ = law::say($1, Option::simulation, @3); $$->simulation = $5; }
  | HexList ',' T_MuxControl '=' T_BoolConstant { $$ = law::say($1, Option::muxControl, @3); $$->muxControl = $5; }
  | HexList ',' T_Test '=' T_BoolConstant { $$ = law::say($1, Option::test, @3); $$->test = $5; }
  | HexList ',' T_ConstraintsOnly '=' T_BoolConstant { $$ = law::say($1, Option::constraintsOnly, @3); $$->constraintsOnly = $5; }
  | T_Simulation '=' T_BoolConstant { BUILD($$ = law::options(Option::simulation)); $$->simulation = $3; }
  | T_MuxControl '=' T_BoolConstant { BUILD($$ = law::options(Option::muxControl)); $$->muxControl = $3; }
  | T_Default '=' T_HexConstant { BUILD($$ = law::options(Option::byDefault)); $$->textDefault = *$3; };

BinaryValues:
    T_BinaryConstant { BUILD($$ = law::value(nullptr, $1)); }
  | BinaryValues ',' T_BinaryConstant { BUILD($$ = law::value($1, $3)); };

BinaryList:
    T_Values '{' BinaryValues '}' { $$ = $3; }
  | T_Min '=' T_BinaryConstant { BUILD($$ = law::options()); $$->textMin = *$3; }
  | BinaryList ',' T_Max '=' T_BinaryConstant { $$ = law::say($1, Option::max, @3); $$->textMax = *$5; }
  | BinaryList ',' T_Default '=' T_BinaryConstant { $$ = law::say($1, Option::byDefault, @3); $$->textDefault = *$5; }
  | BinaryList ',' T_Description '=' T_StringConstant { $$ = law::say($1, Option::description, @3); $$->description = *$5; }
  | BinaryList ',' T_Units '=' T_StringConstant { $$ = law::say($1, Option::units, @3); $$->units = *$5; }
  | BinaryList ',' T_Simulation '=' T_BoolConstant { $$ = law::say($1, Option::simulation, @3); $$->simulation = $5; }
  | BinaryList ',' T_MuxControl '=' T_BoolConstant { $$ = law::say($1, Option::muxControl, @3); $$->muxControl = $5; }
  | BinaryList ',' T_Test '=' T_BoolConstant { $$ = law::say($1, Option::test, @3); $$->test = $5; }
  | BinaryList ',' T_ConstraintsOnly '=' T_BoolConstant { $$ = law::say($1, Option::constraintsOnly, @3); $$->constraintsOnly = $5; }
  | T_Simulation '=' T_BoolConstant { BUILD($$ = law::options(Option::simulation)); $$->simulation = $3; }
  | T_Default '=' T_BinaryConstant { BUILD($$ = law::options(Option::byDefault)); $$->textDefault = *$3; };

DoubleValues:
    T_DoubleConstant { BUILD($$ = law::value(nullptr, $1)); }
  | DoubleValues ',' T_DoubleConstant { BUILD($$ = law::value($1, $3)); };

DoubleList:
    T_Values '{' DoubleValues '}' { $$ = $3; }
  | T_Min '=' T_DoubleConstant { BUILD($$ = law::options()); $$->doubles.min = $3; }
  | DoubleList ',' T_Max '=' T_DoubleConstant { $$ = law::say($1, Option::max, @3); $$->doubles.max = $5; }
  | DoubleList ',' T_Default '=' T_DoubleConstant { $$ = law::say($1, Option::byDefault, @3); $$->doubles.byDefault = $5; }
  | DoubleList ',' T_Precision '=' T_IntConstant { $$ = law::say($1, Option::precision, @3); $$->precision = static_cast<int>($5); }
  | DoubleList ',' T_Units '=' T_StringConstant { $$ = law::say($1, Option::units, @3); $$->units = *$5; }
  | DoubleList ',' T_Simulation '=' T_BoolConstant { $$ = law::say($1, Option::simulation, @3); $$->simulation = $5; }
  | DoubleList ',' T_MuxControl '=' T_BoolConstant { $$ = law::say($1, Option::muxControl, @3); $$->muxControl = $5; }
  | DoubleList ',' T_Test '=' T_BoolConstant { $$ = law::say($1, Option::test, @3); $$->test = $5; }
  | DoubleList ',' T_ConstraintsOnly '=' T_BoolConstant { $$ = law::say($1, Option::constraintsOnly, @3); $$->constraintsOnly = $5; }
  | T_Simulation '=' T_BoolConstant { BUILD($$ = law::options(Option::simulation)); $$->simulation = $3; }
  | T_Default '=' T_DoubleConstant { BUILD($$ = law::options(Option::byDefault)); $$->doubles.byDefault = $3; };

StringValues:
    T_StringConstant { BUILD($$ = law::value(nullptr, $1)); }
  | StringValues ',' T_StringConstant { BUILD($$ = law::value($1, $3)); };

StringPropData:
    T_Values '{' StringValues '}' { $$ = $3; }
  | StringPropData ',' T_Default '=' T_StringConstant { $$ = law::say($1, Option::byDefault, @3); $$->textDefault = *$5; }
  | StringPropData ',' T_Description '=' T_StringConstant { $$ = law::say($1, Option::description, @3); $$->description = *$5; }
  | StringPropData ',' T_Simulation '=' T_BoolConstant { $$ = law::say($1, Option::simulation, @3); $$->simulation = $5; }
  | StringPropData ',' T_MuxControl '=' T_BoolConstant { $$ = law::say($1, Option::muxControl, @3); $$->muxControl = $5; }
  | StringPropData ',' T_Test '=' T_BoolConstant { $$ = law::say($1, Option::test, @3); $$->test = $5; }
  | StringPropData ',' T_ConstraintsOnly '=' T_BoolConstant { $$ = law::say($1, Option::constraintsOnly, @3); $$->constraintsOnly = $5; }
  | T_Simulation '=' T_BoolConstant { BUILD($$ = law::options(Option::simulation)); $$->simulation = $3; }
  | T_MuxControl '=' T_BoolConstant { BUILD($$ = law::options(Option::muxControl)); $$->muxControl = $3; }
  | T_Default '=' T_StringConstant { BUILD($$ = law::options(Option::byDefault)); $$->textDefault = *$3; };

Pin:
    T_Pin T_StringConstant Direction TestPin AbstractPin PinType RequiredValue ';'
        { BUILD($$ = law::bus($2, $3, $4, $5, $6, $7, nullptr, @$)); }
  | T_Pin T_StringConstant Direction TestPin AbstractPin PinType RequiredValue '{' PropertyList '}'
        { BUILD($$ = law::bus($2, $3, $4, $5, $6, $7, $9, @$)); };

TestPin:
    T_Test { $$ = true; }
  | %empty { $$ = false; };

AbstractPin:
    T_Abstract { $$ = true; }
  | %empty { $$ = false; };

RequiredValue:
    T_TieLow { $$ = HDNT_PIN_TIE_LOW; }
  | T_TieHigh { $$ = HDNT_PIN_TIE_HIGH; }
  | T_TieSpecial { $$ = HDNT_PIN_TIE_SPECIAL; }
  | T_Untie { $$ = HDNT_PIN_UNTIE; }
  | T_Active { $$ = HDNT_PIN_ACTIVE; }
  | T_MustConnect { $$ = HDNT_PIN_MUST_CONNECT; }
  | %empty { $$ = HDNT_PIN_NO_VALUE; };

PinType:
    T_Data { $$ = HDNT_PIN_DATA; }
  | T_Clock { $$ = HDNT_PIN_CLOCK; }
  | T_Clear { $$ = HDNT_PIN_CLEAR; }
  | T_Enable { $$ = HDNT_PIN_ENABLE; }
  | T_Mixed { $$ = HDNT_PIN_MIXED; }
  | T_Preset { $$ = HDNT_PIN_PRESET; }
  | T_Reset { $$ = HDNT_PIN_RESET; }
  | T_Set { $$ = HDNT_PIN_SET; }
  | T_SetReset { $$ = HDNT_PIN_SET_RESET; }
  | T_WriteEnable { $$ = HDNT_PIN_WRITE_ENABLE; }
  | %empty { $$ = HDNT_PIN_DATA; };

Direction:
    T_Input { $$ = HDNT_PIN_INPUT; }
  | T_Output { $$ = HDNT_PIN_OUTPUT; }
  | T_Bidir { $$ = HDNT_PIN_BIDIR; }
  | T_Internal { $$ = HDNT_PIN_INTERNAL; };

%%

/* The parser and the scanner agree on the numbers. */
static_assert(+TOKEN_T_Library == +T_Library && +TOKEN_T_Bool == +T_Bool && +TOKEN_T_PinList == +T_PinList);
static_assert(+TOKEN_T_Identifier == +T_Identifier && +TOKEN_T_BoolConstant == +T_BoolConstant && +TOKEN_T_Else == +T_Else);
static_assert(+TOKEN_T_GreaterEqual == +T_GreaterEqual && +TOKEN_T_OrOr == +T_OrOr && +TOKEN_T_Untie == +T_Untie);
static_assert(+TOKEN_T_Deprecated == +T_Deprecated && +TOKEN_T_Abstract == +T_Abstract && T_Abstract == 331);
/* The size of the language, which the numbers of rules and symbols in traces depend on. */
static_assert(YYNTOKENS == 96 && YYNNTS == 58 && YYNRULES == 215);
