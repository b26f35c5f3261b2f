#include "genapi_steps.h"

#include <gtest/gtest.h>

using namespace GenApi;
using namespace GenApiTest;

namespace {

/// Nodes, and steps with commas between them: "ACTION" or "ACTION -> TEXT", where without a text the answer is empty.
struct Case {
    const char *name;
    const char *nodes;
    const char *steps;
};

void PrintTo(const Case &c, std::ostream *stream) { *stream << c.name; }

const Case cases[] = {
    {"IntegerVariable", "<Integer Name='A'><Value>0x10</Value><Min>8</Min><Max>64</Max><Inc>4</Inc></Integer>",
     "A -> 16, A=20, A -> 20, A=21 -> OutOfRangeException, A=4 -> OutOfRangeException, A=68 -> OutOfRangeException, "
     "A=x -> InvalidArgumentException, A -> 20, A.min -> 8, A.max -> 64, A.inc -> 4, port"},
    {"IntegerRegisters",
     "<IntReg Name='B4'><Address>0x100</Address><Length>4</Length>" REG "<Endianess>BigEndian</Endianess></IntReg>"
     "<IntReg Name='L4'><Address>0x100</Address><Length>4</Length>" REG "<Endianess>LittleEndian</Endianess></IntReg>"
     "<IntReg Name='S1'><Address>0x103</Address><Length>1</Length>" REG "<Sign>Signed</Sign></IntReg>"
     "<IntReg Name='B3'><Address>0x101</Address><Length>3</Length>" REG
     "<Sign>Signed</Sign><Endianess>BigEndian</Endianess></IntReg>"
     "<IntReg Name='U8'><Address>0x200</Address><Length>8</Length>" REG "<Endianess>BigEndian</Endianess></IntReg>"
     "<IntReg Name='L9'><Address>0x100</Address><Length>9</Length>" REG "</IntReg>"
     "<Integer Name='Wide'><pValue>S1</pValue><Min>-9999</Min><Max>9999</Max></Integer>"
     "<IntReg Name='RdOnly'><Address>0x100</Address><Length>4</Length>" PORT "</IntReg>",
     "fill 100 000001fe, fill 200 ffffffffffffffff, B4 -> 510, L4 -> 4261478400, S1 -> -2, B3 -> 510, U8 -> -1, "
     "port -> r100:4 r100:4 r103:1 r101:3 r200:8, B3=-2, port -> w101:fffffe, B4 -> 16777214, L4=258, "
     "port -> r100:4 w100:02010000, S1=128 -> OutOfRangeException, S1=-128, U8=-2 -> OutOfRangeException, U8=2, "
     "port -> w103:80 w200:0000000000000002, S1.min -> -128, U8.min -> 0, U8.max -> 9223372036854775807, "
     "Wide=256 -> OutOfRangeException, Wide=-129 -> OutOfRangeException, port -> , B3.max -> 8388607, "
     "B4.max -> 4294967295, L9 -> RuntimeException, RdOnly=1 -> AccessException"},
    {"MasksCountFromTheMostSignificantBitInBigEndian",
     "<MaskedIntReg Name='BeHigh'><Address>0</Address><Length>4</Length><LSB>7</LSB><MSB>0</MSB>" REG
     "<Endianess>BigEndian</Endianess></MaskedIntReg>"
     "<MaskedIntReg Name='LeHigh'><Address>0</Address><Length>4</Length><LSB>24</LSB><MSB>31</MSB>" REG
     "<Endianess>LittleEndian</Endianess></MaskedIntReg>"
     "<MaskedIntReg Name='BeSigned'><Address>0</Address><Length>2</Length><LSB>15</LSB><MSB>12</MSB>" REG
     "<Endianess>BigEndian</Endianess><Sign>Signed</Sign></MaskedIntReg>"
     "<MaskedIntReg Name='BeBit'><Address>0</Address><Length>2</Length><Bit>0</Bit>" REG
     "<Endianess>BigEndian</Endianess></MaskedIntReg>"
     "<MaskedIntReg Name='Swapped'><Address>0</Address><Length>4</Length><LSB>0</LSB><MSB>7</MSB>" REG
     "<Endianess>BigEndian</Endianess></MaskedIntReg>"
     "<MaskedIntReg Name='Outside'><Address>0</Address><Length>2</Length><LSB>16</LSB><MSB>0</MSB>" REG
     "</MaskedIntReg>"
     "<MaskedIntReg Name='WrOnly'><Address>0x10</Address><Length>1</Length><LSB>4</LSB><MSB>7</MSB>" PORT
     "<AccessMode>WO</AccessMode></MaskedIntReg>",
     "fill 0 8f0f0001, fill 10 ff, BeHigh -> 143, LeHigh -> 1, BeSigned -> -1, BeBit -> 1, Swapped -> 143, "
     "Outside -> RuntimeException, BeSigned.min -> -8, port -> r0:4 r0:4 r0:2 r0:2 r0:4, BeSigned=5, BeBit=0, "
     "BeHigh=16, port -> r0:2 w0:8f05 r0:2 w0:0f05 r0:4 w0:10050001, WrOnly=3, port -> w10:30"},
    {"StructEntriesShareARegister",
     "<Integer Name='X'><Value>0</Value></Integer><Integer Name='Y'><Value>0</Value></Integer>"
     "<StructReg Comment='c'><Address>0x40</Address><Length>4</Length>" REG
     "<pInvalidator>X</pInvalidator><Endianess>LittleEndian</Endianess>"
     "<IntSwissKnife Name='Offset'><Formula>0x10 * 2</Formula></IntSwissKnife>"
     "<StructEntry Name='Low'><LSB>0</LSB><MSB>15</MSB></StructEntry>"
     "<StructEntry Name='Own'><Bit>0</Bit><pInvalidator>Y</pInvalidator></StructEntry>"
     "<StructEntry Name='High'><LSB>16</LSB><MSB>31</MSB><AccessMode>RO</AccessMode><Sign>Signed</Sign></StructEntry>"
     "</StructReg>",
     // The device's present bits are kept, not those that were read before.
     "fill 60 0100ffff, Low -> 1, High -> -1, fill 60 0100efff, Low=4660, port -> r60:4 r60:4 r60:4 w60:3412efff, "
     "High -> -17, port -> r60:4, High=1 -> AccessException, Own -> 0, X=1, Own -> 0, Y=1, Own -> 0, Own -> 0, "
     "port -> r60:4 r60:4 r60:4"},
    {"PortMaySwapBytes",
     "<Port Name='Swapping'><SwapEndianess>Yes</SwapEndianess></Port><Port Name='Other'/>"
     "<IntReg Name='A'><Address>0</Address><Length>2</Length><Endianess>BigEndian</Endianess><pPort>Other</pPort>"
     "</IntReg>"
     "<IntReg Name='B'><Address>0</Address><Length>2</Length><Endianess>BigEndian</Endianess><pPort>Swapping</pPort>"
     "</IntReg>",
     "fill 0 0102, A.access -> NI, A -> AccessException, B -> 513"},
    {"AddressesAddUp",
     "<Integer Name='I'><Value>2</Value></Integer><Integer Name='Step'><Value>0x100</Value></Integer>"
     "<Integer Name='Base'><Value>0x1000</Value></Integer>"
     "<IntReg Name='A'><Address>0x10</Address><Address>4</Address><pAddress>Base</pAddress>"
     "<IntSwissKnife Name='K'><pVariable Name='X'>Base</pVariable><Formula>X / 2</Formula></IntSwissKnife>"
     "<pIndex Offset='8'>I</pIndex><pIndex pOffset='Step'>I</pIndex><pIndex>I</pIndex><Length>4</Length>" REG
     "</IntReg>",
     // 0x14 + 0x1000 + 0x800 + 2 * 8 + 2 * 0x100 + 2 * 4
     "A.address -> 6700, I=0, A.address -> 6164, A -> 0, port -> r1814:4"},
    {"FloatRegistersAndFloats",
     "<FloatReg Name='F4'><Address>0</Address><Length>4</Length>" REG "<Endianess>BigEndian</Endianess></FloatReg>"
     "<FloatReg Name='F8'><Address>8</Address><Length>8</Length>" REG "<Endianess>LittleEndian</Endianess></FloatReg>"
     "<FloatReg Name='F2'><Address>8</Address><Length>2</Length>" REG "</FloatReg>"
     "<IntReg Name='R'><Address>0x10</Address><Length>1</Length>" REG "</IntReg>"
     "<Float Name='OverInt'><pValue>R</pValue></Float>"
     "<Float Name='Limited'><Value>1.5</Value><Min>-2.5</Min><Max>1e3</Max></Float>"
     "<Float Name='Huge'><Value>1</Value><Max>10000000000000000000</Max></Float>"
     "<Integer Name='OverFloat'><pValue>Limited</pValue></Integer>",
     "fill 0 3fc00000, fill 8 0000000000000440, fill 10 07, F4 -> 1.5, F8 -> 2.5, F4=-2, F8=0.1, "
     "port -> r0:4 r8:8 w0:c0000000 w8:9a9999999999b93f, F2 -> RuntimeException, OverInt -> 7, OverInt=9.6, "
     "port -> r10:1 w10:0a, OverInt.max -> 255, OverInt.inc -> 1, OverInt=256 -> OutOfRangeException, "
     "Limited.inc -> LogicalErrorException, Limited=-3 -> OutOfRangeException, Limited=nan -> OutOfRangeException, "
     "Huge.max -> 1e+19, OverFloat -> 2, OverFloat.min -> -2, OverFloat=-2, Limited -> -2"},
    {"ConvertersWorkBothWays",
     "<IntReg Name='R'><Address>0</Address><Length>2</Length>" REG "<Endianess>BigEndian</Endianess></IntReg>"
     "<Integer Name='K'><Value>10</Value></Integer>"
     "<Converter Name='C'><pVariable Name='K'>K</pVariable><FormulaTo>FROM * K</FormulaTo>"
     "<FormulaFrom>TO / K</FormulaFrom><pValue>R</pValue><Slope>Increasing</Slope></Converter>"
     "<Converter Name='Inverse'><FormulaTo>1000 / FROM</FormulaTo><FormulaFrom>1000 / (TO + 1)</FormulaFrom>"
     "<pValue>R</pValue><Slope>Decreasing</Slope></Converter>"
     "<IntConverter Name='I'><FormulaTo>-FROM</FormulaTo><FormulaFrom>-TO</FormulaFrom><pValue>R</pValue>"
     "</IntConverter>"
     "<Converter Name='Varying'><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>R</pValue>"
     "<Slope>Varying</Slope></Converter>"
     "<Converter Name='Pole'><FormulaTo>1000 / FROM</FormulaTo><FormulaFrom>1000 / TO</FormulaFrom><pValue>R</pValue>"
     "</Converter><IntReg Name='R8'><Address>8</Address><Length>8</Length>" REG "</IntReg>"
     "<Converter Name='Down'><FormulaTo>-FROM</FormulaTo><FormulaFrom>-TO</FormulaFrom><pValue>R8</pValue></Converter>"
     "<IntConverter Name='Tenth'><FormulaTo>FROM / 0.1</FormulaTo><FormulaFrom>0.1 * TO</FormulaFrom>"
     "<pValue>R</pValue></IntConverter>"
     "<IntConverter Name='Wide'><FormulaTo>FROM / 2</FormulaTo><FormulaFrom>TO * 2</FormulaFrom><pValue>R8</pValue>"
     "</IntConverter>"
     "<Float Name='Over'><pValue>C</pValue></Float><Integer Name='IntOver'><pValue>C</pValue></Integer>",
     "fill 0 0019, C -> 2.5, C=7.25, port -> r0:2 w0:0049, C.min -> 0, C.max -> 6553.5, Inverse.min -> 0.0152588, "
     "Inverse.max -> 1000, I -> -73, I=-5, I.min -> -65535, I.max -> 0, Varying.max -> 1.79769e+308, "
     "Pole.min -> -1.79769e+308, Wide.min -> 0, Wide.max -> 9223372036854775807, Down.max -> 0, Tenth=7, Tenth -> 7, "
     "Over=1.5, IntOver -> 2, IntOver.max -> 6553, port -> w0:0005 w0:0046 w0:000f"},
    {"Booleans",
     "<Boolean Name='B'><pValue>R</pValue><OnValue>5</OnValue><OffValue>3</OffValue></Boolean>"
     "<Boolean Name='V'><Value>1</Value></Boolean>"
     "<Enumeration Name='E'><EnumEntry Name='Off'><Value>0</Value></EnumEntry><EnumEntry Name='On'><Value>1</Value>"
     "</EnumEntry><Value>1</Value></Enumeration><Boolean Name='OverEnum'><pValue>E</pValue></Boolean>"
     "<Integer Name='OverBool'><pValue>B</pValue></Integer>",
     "fill 0 05, B -> 1, B=false, B=2 -> InvalidArgumentException, port -> r0:1 w0:03, B -> 0, OverBool=1, "
     "OverBool -> 1, port -> w0:05, V -> 1, OverEnum -> 1, OverEnum=0, E -> Off"},
    {"Enumerations",
     "<Integer Name='HasC'><Value>0</Value></Integer>"
     "<Enumeration Name='E'><EnumEntry Name='A'><Value>1</Value></EnumEntry>"
     "<EnumEntry Name='B'><Value>0x2</Value><NumericValue>2.5</NumericValue></EnumEntry>"
     "<EnumEntry Name='C'><pIsAvailable>HasC</pIsAvailable><Value>3</Value></EnumEntry><pValue>R</pValue>"
     "</Enumeration><Float Name='F'><pValue>E</pValue></Float>"
     "<SwissKnife Name='K'><pVariable Name='E'>E</pVariable><Formula>E = E.Entry.B ? E : -1</Formula></SwissKnife>",
     "fill 0 02, E -> B, F -> 2.5, K -> 2.5, F=1.7 -> InvalidArgumentException, F=1, F=2.5, E -> B, "
     "port -> r0:1 w0:01 w0:02, E.symbolics -> A B, E=A, E=C -> AccessException, E=D -> InvalidArgumentException, "
     "HasC=1, E.symbolics -> A B C, E=C, port -> w0:01 w0:03, fill 0 09, E.fresh -> RuntimeException, "
     "EnumEntry_E_B -> B, EnumEntry_E_B=A -> AccessException"},
    {"Commands",
     "<IntReg Name='R'><Address>0</Address><Length>1</Length>" REG "<Cachable>NoCache</Cachable></IntReg>"
     "<IntReg Name='W'><Address>1</Address><Length>1</Length>" PORT "<AccessMode>WO</AccessMode></IntReg>"
     "<Integer Name='Code'><Value>9</Value></Integer>"
     "<Command Name='Run'><pValue>R</pValue><CommandValue>7</CommandValue></Command>"
     "<Command Name='Go'><pValue>W</pValue><pCommandValue>Code</pCommandValue></Command>",
     "Run(), Run.done -> no, fill 0 00, Run.done -> yes, port -> w0:07 r0:1 r0:1, Go(), Go.done -> yes, "
     "port -> w1:09, port RO, Go() -> AccessException"},
    {"Texts",
     "<StringReg Name='R'><Address>0</Address><Length>4</Length>" REG "</StringReg>"
     "<String Name='S'><pValue>R</pValue></String><String Name='V'><Value> one two </Value></String>",
     "fill 0 41420000, R -> AB, S=wxyz, S -> wxyz, S=vwxyz -> OutOfRangeException, R=q, "
     "port -> r0:4 w0:7778797a w0:71000000, S.length -> 4, V -> one two, V=x, V -> x"},
    {"RawRegisters",
     "<Integer Name='L'><Value>3</Value></Integer>"
     "<Register Name='R'><Address>0</Address><pLength>L</pLength>" REG "</Register>",
     "fill 0 0aff0c, R -> 0x0aff0c, R=0x010203, R=0x0102 -> OutOfRangeException, "
     "R=0x01020 -> InvalidArgumentException, port -> r0:3 w0:010203, L=0, R -> RuntimeException, L=0x7fffffffffff, "
     "R -> RuntimeException, port"},
    {"TextFormsOfIntegers",
     "<Integer Name='Ip'><pValue>R</pValue></Integer>"
     "<IntReg Name='R'><Address>0</Address><Length>4</Length>" REG
     "<Endianess>BigEndian</Endianess><Representation>IPV4Address</Representation></IntReg>"
     "<Integer Name='Mac'><Value>0</Value><Representation>MACAddress</Representation></Integer>"
     "<Integer Name='Hex'><Value>255</Value><Representation>HexNumber</Representation></Integer>",
     "fill 0 c0a80001, Ip -> 192.168.0.1, Ip=10.0.0.254, port -> r0:4 w0:0a0000fe, "
     "Ip=10.0.0 -> InvalidArgumentException, Ip=10.0.0.256 -> InvalidArgumentException, Ip=258, Ip -> 0.0.1.2, "
     "Mac=00:1b:c5:0A:f0:01, Mac -> 00:1b:c5:0a:f0:01, Hex -> 0xFF"},
    {"ValuesChosenByAnIndex",
     "<Integer Name='Sel'><Value>1</Value><pSelected>V</pSelected></Integer>"
     "<Integer Name='V'><pIndex>Sel</pIndex><ValueIndexed Index='1'>11</ValueIndexed>"
     "<pValueIndexed Index='2'>R</pValueIndexed><ValueDefault>99</ValueDefault></Integer>"
     "<IntReg Name='Arr'><Address>0x10</Address><pIndex Offset='4'>Sel</pIndex><Length>4</Length>" REG "</IntReg>"
     "<Integer Name='ByReg'><pIndex>R</pIndex><ValueDefault>9</ValueDefault></Integer>",
     "fill 0 05, V -> 11, V=12, Sel=2, V -> 5, V=6, Sel=3, V -> 99, Sel=1, V -> 12, port -> r0:1 w0:06, "
     "Sel.selected -> V, V.selecting -> Sel, Arr -> 0, Sel=2, Arr -> 0, Sel=1, Arr -> 0, port -> r14:4 r18:4, "
     "ByReg -> 9, port WO, ByReg.access -> NA, port NI, ByReg.access -> NI, ByReg.max -> 9223372036854775807"},
    {"ASelectorEndsTheCacheBehindItsFeatures",
     "<Integer Name='Sel'><Value>0</Value><pSelected>V</pSelected><pSelected>Arr</pSelected></Integer>"
     "<Integer Name='V'><pValue>K</pValue></Integer>"
     "<IntSwissKnife Name='K'><pVariable Name='R'>R</pVariable><pVariable Name='S'>Sel</pVariable>"
     "<Formula>R + S</Formula></IntSwissKnife><Integer Name='Arr'><pValue>A</pValue></Integer>"
     "<IntReg Name='A'><Address>0x10</Address><pIndex>Sel</pIndex><Length>1</Length>" REG "</IntReg>",
     "fill 0 01, V -> 1, Arr -> 0, fill 0 02, Sel=1, V -> 3, Sel=0, Arr -> 0, port -> r0:1 r10:1 r0:1"},
    {"ValueCopies",
     "<IntReg Name='Wide'><Address>2</Address><Length>2</Length>" REG "</IntReg>"
     "<IntReg Name='RdOnly'><Address>4</Address><Length>1</Length>" PORT "</IntReg>"
     "<Integer Name='A'><pValue>R</pValue><pValueCopy>S</pValueCopy></Integer>"
     "<Integer Name='B'><pValue>R</pValue><pValueCopy>S</pValueCopy><pValueCopy>RdOnly</pValueCopy></Integer>"
     "<Integer Name='C'><pValue>Wide</pValue><pValueCopy>S</pValueCopy></Integer>",
     "A=7, A -> 7, port -> w0:07 w1:07, B=8 -> AccessException, C=300 -> OutOfRangeException, C=5, "
     "port -> w2:0500 w1:05"},
    {"WithinAWriteTheSecondTargetSeesTheFirst",
     "<IntSwissKnife Name='K'><pVariable Name='R'>R</pVariable><Formula>R</Formula></IntSwissKnife>"
     "<IntConverter Name='C'><pVariable Name='K'>K</pVariable><FormulaTo>FROM + K</FormulaTo>"
     "<FormulaFrom>TO</FormulaFrom><pValue>R</pValue></IntConverter>"
     "<IntConverter Name='D'><pVariable Name='K'>K</pVariable><FormulaTo>K</FormulaTo>"
     "<FormulaFrom>TO</FormulaFrom><pValue>S</pValue></IntConverter>"
     "<Integer Name='A'><pValue>C</pValue><pValueCopy>D</pValueCopy></Integer>",
     "fill 0 03, A=7, port -> r0:1 w0:0a w1:0a"},
    {"ListsOfValidValues", "<Integer Name='A'><Value>1</Value><ValidValueSet>1; 2;8</ValidValueSet></Integer>",
     "A=8, A=4 -> OutOfRangeException, A -> 8"},
    {"AccessModes",
     "<Integer Name='Impl'><Value>1</Value></Integer><Integer Name='Avail'><Value>1</Value></Integer>"
     "<Integer Name='Lock'><Value>0</Value></Integer>"
     "<Integer Name='A'><pIsImplemented>Impl</pIsImplemented><pIsAvailable>Avail</pIsAvailable>"
     "<pIsLocked>Lock</pIsLocked><pValue>R</pValue></Integer>"
     "<Integer Name='Imposed'><ImposedAccessMode>WO</ImposedAccessMode><pValue>R</pValue></Integer>"
     "<IntSwissKnife Name='Knife'><pVariable Name='R'>R</pVariable><Formula>R + 1</Formula></IntSwissKnife>"
     "<Category Name='Cat'><pFeature>A</pFeature><pFeature>Missing</pFeature><pFeature>Knife</pFeature></Category>",
     "A.access -> RW, Lock=1, A.access -> RO, A=1 -> AccessException, Avail=0, A.access -> NA, A -> AccessException, "
     "A.impose NI, A.access -> NI, A.impose RW, Impl=0, A.access -> NI, Impl=1, Avail=1, Lock=0, port RO, "
     "A.access -> RO, Imposed.access -> NA, port WO, A.access -> WO, Knife.access -> NA, port NA, A.access -> NA, "
     "port NI, A.access -> NI, Knife.access -> NI, Knife -> AccessException, port RW, A.impose RO, A.access -> RO, "
     "A=1 -> AccessException, A.impose RW, A.access -> RW, Imposed.impose RW, Imposed.access -> WO, "
     "Cat.features -> A Knife, Cat.access -> RO"},
    {"AConditionThatCannotBeReadIsNotMet",
     "<IntReg Name='W'><Address>0</Address><Length>1</Length>" PORT "<AccessMode>WO</AccessMode></IntReg>"
     "<Integer Name='A'><Value>1</Value><pIsAvailable>W</pIsAvailable></Integer>"
     "<Integer Name='L'><Value>1</Value><pIsLocked>W</pIsLocked></Integer>",
     "A.access -> NA, L.access -> RO"},
    {"CachingIsPerResolvedAddress",
     "<Integer Name='I'><Value>0</Value></Integer>"
     "<IntReg Name='R'><Address>0</Address><pIndex Offset='1'>I</pIndex><Length>1</Length>" REG "</IntReg>"
     "<IntReg Name='Volatile'><Address>8</Address><Length>1</Length>" REG "<Cachable>NoCache</Cachable></IntReg>"
     "<IntReg Name='Around'><Address>9</Address><Length>1</Length>" REG "<Cachable>WriteAround</Cachable></IntReg>"
     "<Integer Name='OverVolatile'><pValue>Volatile</pValue></Integer>",
     "fill 0 0a0b, fill 8 0102, R.cached -> no, R -> 10, R -> 10, R.cached -> yes, port -> r0:1, R.fresh -> 10, "
     "port -> r0:1, R=12, R -> 12, I=1, R.cached -> no, I=0, R.cached -> yes, port -> w0:0c, Volatile -> 1, "
     "Volatile -> 1, port -> r8:1 r8:1, OverVolatile.caching -> 0, Around -> 2, Around=3, Around -> 3, Around -> 3, "
     "port -> r9:1 w9:03 r9:1"},
    {"AWriteEndsOtherRegistersLinesOfTheSameBytes",
     "<IntReg Name='A'><Address>0</Address><Length>4</Length>" REG "</IntReg>"
     "<IntReg Name='B'><Address>2</Address><Length>4</Length>" REG "</IntReg>"
     "<IntReg Name='C'><Address>4</Address><Length>1</Length>" REG "</IntReg>",
     "A -> 0, B -> 0, C -> 0, port -> r0:4 r2:4 r4:1, A=1, A -> 1, B -> 0, C -> 0, port -> w0:01000000 r2:4"},
    {"InvalidatorsReachThroughCycles",
     "<IntReg Name='A'><Address>0</Address><Length>1</Length>" REG "<pInvalidator>C</pInvalidator></IntReg>"
     "<IntReg Name='B'><Address>1</Address><Length>1</Length>" REG "<pInvalidator>A</pInvalidator></IntReg>"
     "<IntReg Name='C'><Address>2</Address><Length>1</Length>" REG "<pInvalidator>B</pInvalidator></IntReg>"
     "<IntReg Name='D'><Address>3</Address><Length>1</Length>" REG "</IntReg>",
     "A -> 0, B -> 0, C -> 0, D -> 0, port -> r0:1 r1:1 r2:1 r3:1, A=1, A -> 1, B -> 0, C -> 0, D -> 0, "
     "port -> w0:01 r1:1 r2:1, D.invalidate, D -> 0, A -> 1, port -> r3:1, Device.invalidate, A -> 1, B -> 0, "
     "port -> r0:1 r1:1"},
    {"Polling",
     "<IntReg Name='A'><Address>0</Address><Length>1</Length>" REG "<PollingTime>1000</PollingTime></IntReg>",
     "A -> 0, poll 999, A -> 0, port -> r0:1, poll 1, A -> 0, port -> r0:1, poll 500, A -> 0, port"},
    {"CyclesFailOnlyWhereTheyAre",
     "<Integer Name='A'><pValue>B</pValue></Integer><Integer Name='B'><pValue>A</pValue></Integer>"
     "<Integer Name='Self'><Value>1</Value><pMax>Self</pMax></Integer>"
     "<Integer Name='LoopMin'><Value>1</Value><pMin>Knife</pMin></Integer>"
     "<IntSwissKnife Name='Knife'><pVariable Name='L'>LoopMin</pVariable><Formula>L.Min</Formula></IntSwissKnife>"
     "<IntReg Name='R'><Address>0</Address><pAddress>R</pAddress><Length>1</Length>" REG "</IntReg>"
     "<IntSwissKnife Name='X'><Expression Name='P'>Q</Expression><Expression Name='Q'>P</Expression>"
     "<Formula>P</Formula></IntSwissKnife>"
     "<Integer Name='P'><Value>1</Value><pIsAvailable>Q</pIsAvailable></Integer>"
     "<Integer Name='Q'><Value>1</Value><pIsAvailable>P</pIsAvailable></Integer>"
     "<Integer Name='Fine'><Value>4</Value></Integer>",
     "A -> RuntimeException, A=1 -> RuntimeException, Self -> 1, Self.max -> 1, LoopMin -> 1, "
     "LoopMin.min -> RuntimeException, R -> RuntimeException, X -> RuntimeException, P -> 1, P.access -> RW, Fine -> "
     "4"},
    {"LimitsBeyondTheRange",
     "<Integer Name='A'><Value>5</Value><Min>0</Min><Max>0xFFFFFFFFFFFFFFFF</Max></Integer>"
     "<Integer Name='B'><Value>5</Value><Max>99999999999999999999</Max></Integer>"
     "<Integer Name='C'><Value>-9</Value><Max>-2</Max></Integer>"
     "<Integer Name='D'><Value>1</Value><Max>x</Max></Integer>"
     "<Float Name='F'><Value>1e-400</Value><Min>-1.79769313486232E+308</Min><Max>1.79769313486232E+308</Max></Float>"
     "<Float Name='G'><Value>1</Value><Max>0xFFFFFFFFFFFFFFFF</Max></Float>",
     "A.max -> 9223372036854775807, A=7, A -> 7, B=8, B -> 8, C=-1 -> OutOfRangeException, C=-2, "
     "D=2 -> RuntimeException, F -> 0, F=1e300, F.min -> -1.79769e+308, F.max -> 1.79769e+308, G.max -> 1.84467e+19"},
    {"LimitsThatAreNotAvailableAreNone",
     "<Integer Name='On'><Value>0</Value></Integer>"
     "<Integer Name='M'><pIsAvailable>On</pIsAvailable><Value>9</Value></Integer>"
     "<Integer Name='A'><Value>1</Value><pMin>M</pMin><pMax>M</pMax></Integer>"
     "<Float Name='F'><Value>1</Value><pMax>M</pMax></Float>",
     "A=12, A -> 12, F.max -> 1.79769e+308, On=1, A=10 -> OutOfRangeException, A.min -> 9, F.max -> 9"},
    {"LimitsOfInnerNodesHold",
     "<Integer Name='Inner'><Value>0</Value><Min>0</Min><Max>50</Max><Inc>5</Inc></Integer>"
     "<Integer Name='Outer'><pValue>Inner</pValue><Max>100</Max><Inc>1</Inc></Integer>"
     "<Integer Name='Copying'><Value>0</Value><pValueCopy>Inner</pValueCopy></Integer>"
     "<IntConverter Name='C'><FormulaTo>FROM * 2</FormulaTo><FormulaFrom>TO / 2</FormulaFrom><pValue>Inner</pValue>"
     "<Slope>Varying</Slope></IntConverter>"
     "<Float Name='Real'><Value>0</Value><Max>0.1</Max></Float>"
     "<Converter Name='D'><FormulaTo>FROM / 3</FormulaTo><FormulaFrom>TO * 3</FormulaFrom><pValue>Real</pValue>"
     "<Slope>Varying</Slope></Converter>"
     "<Enumeration Name='E'><EnumEntry Name='X'><Value>1</Value></EnumEntry><Value>1</Value></Enumeration>"
     "<Integer Name='OverE'><pValue>E</pValue></Integer>",
     "Outer=55 -> OutOfRangeException, Outer=12 -> OutOfRangeException, Outer=45, Inner -> 45, "
     "C=26 -> OutOfRangeException, C=13 -> OutOfRangeException, C=20, Inner -> 40, Copying=1 -> OutOfRangeException, "
     "Copying -> 0, D=0.31 -> OutOfRangeException, D=0.30000000000000004, Real -> 0.1, "
     "OverE=2 -> InvalidArgumentException"},
    {"TwoEntriesMayHaveOneValue",
     "<Integer Name='On'><Value>0</Value></Integer>"
     "<Enumeration Name='E'><EnumEntry Name='A'><Value>1</Value><pIsAvailable>On</pIsAvailable></EnumEntry>"
     "<EnumEntry Name='B'><Value>1</Value></EnumEntry><pValue>R</pValue></Enumeration>",
     "E=B, E -> B, E=A -> AccessException, port -> w0:01, On=1, E -> A, E=B, E=A, port -> w0:01 w0:01"},
    {"SelfClearingEntriesAreReadUntilTheyClear",
     "<Enumeration Name='E'><EnumEntry Name='Idle'><Value>0</Value></EnumEntry><EnumEntry Name='Go'><Value>1</Value>"
     "<IsSelfClearing>Yes</IsSelfClearing></EnumEntry><pValue>R</pValue></Enumeration>",
     "E=Go, E.cached -> no, E -> Go, E -> Go, port -> w0:01 r0:1 r0:1, fill 0 00, E -> Idle, E -> Idle, "
     "E.cached -> yes, port -> r0:1"},
    {"ConditionsOfManyEntriesReadTheirRegistersOnce",
     "<IntReg Name='R'><Address>0</Address><Length>1</Length>" PORT "<Cachable>NoCache</Cachable></IntReg>"
     "<IntReg Name='S'><Address>1</Address><Length>1</Length>" PORT "<Cachable>NoCache</Cachable></IntReg>"
     "<IntSwissKnife Name='K'><pVariable Name='R'>R</pVariable><pVariable Name='S'>S</pVariable>"
     "<Formula>R + S &gt; 0</Formula></IntSwissKnife>"
     "<IntSwissKnife Name='L'><pVariable Name='R'>R</pVariable><pVariable Name='S'>S</pVariable>"
     "<Formula>R - S &gt; 0</Formula></IntSwissKnife>"
     "<Enumeration Name='E'><EnumEntry Name='A'><Value>0</Value><pIsAvailable>K</pIsAvailable></EnumEntry>"
     "<EnumEntry Name='B'><Value>1</Value><pIsAvailable>L</pIsAvailable></EnumEntry>"
     "<EnumEntry Name='C'><Value>2</Value><pIsAvailable>K</pIsAvailable></EnumEntry><Value>0</Value></Enumeration>",
     "fill 0 0101, E.symbolics -> A C, port -> r0:1 r1:1, fill 0 02, E.symbolics -> A B C, E=B, "
     "port -> r0:1 r1:1 r0:1 r1:1"},
    {"InvalidationReachesTheRegistersBelow",
     "<IntReg Name='Lock'><Address>2</Address><Length>1</Length>" REG "</IntReg>"
     "<IntReg Name='BehindS'><Address>3</Address><Length>1</Length>" REG "<pInvalidator>S</pInvalidator></IntReg>"
     "<Integer Name='A'><pValue>R</pValue><PollingTime>1000</PollingTime><pIsLocked>Lock</pIsLocked></Integer>"
     "<IntSwissKnife Name='K'><pVariable Name='S'>S</pVariable><Formula>S</Formula></IntSwissKnife>"
     "<Integer Name='B'><pValue>K</pValue><pInvalidator>X</pInvalidator></Integer>"
     "<Integer Name='X'><Value>0</Value></Integer>",
     "A -> 0, B -> 0, BehindS -> 0, A.access -> RW, fill 0 05060007, poll 1000, A -> 5, A.access -> RW, B -> 0, X=1, "
     "B -> 6, BehindS -> 7, fill 1 08, B -> 6, B.invalidate, B -> 8, A -> 5, "
     "port -> r2:1 r0:1 r1:1 r3:1 r0:1 r1:1 r3:1 r1:1"},
    {"PollingMayBeBlockedAndSparesIdleCommands",
     "<Command Name='Run'><pValue>R</pValue><PollingTime>10</PollingTime></Command>"
     "<Integer Name='Block'><Value>1</Value></Integer>"
     "<Integer Name='A'><pValue>S</pValue><PollingTime>10</PollingTime><pBlockPolling>Block</pBlockPolling></Integer>",
     "R -> 0, A -> 0, fill 0 0102, poll 10, R -> 0, A -> 0, Block=0, poll 1, A -> 2, Run(), fill 0 05, R -> 1, "
     "poll 10, R -> 5"},
    {"ErrorIndicatorsAreReadAfterAWrite",
     "<IntReg Name='Code'><Address>1</Address><Length>1</Length>" REG "</IntReg>"
     "<Integer Name='A'><pValue>R</pValue><pError>Code</pError></Integer>",
     "A=1, fill 1 02, A=3 -> RuntimeException, A -> 3, port -> w0:01 r1:1 w0:03 r1:1"},
    {"NodesOfIeee1394CamerasAreNotAvailable",
     "<SmartFeature Name='Smart'><FeatureID>2A411342-C0CA-4368-B46E-EE5DEEBF0548</FeatureID>" PORT "</SmartFeature>"
     "<IntReg Name='A'><pAddress>Smart</pAddress><Length>4</Length>" REG "</IntReg>"
     "<ConfRom Name='Rom'><Unit>0</Unit></ConfRom><IntKey Name='Key'><p1212Parser>Rom</p1212Parser></IntKey>"
     "<Integer Name='OverKey'><pValue>Key</pValue></Integer><AdvFeatureLock Name='Lock'/><TextDesc Name='Text'/>"
     "<Integer Name='Fine'><Value>4</Value><pIsLocked>Lock</pIsLocked></Integer>"
     "<String Name='Vendor'><pValue>Text</pValue></String>",
     "Smart.access -> NA, A.access -> NA, A -> AccessException, OverKey.access -> NA, Vendor -> AccessException, "
     "Fine -> 4, Fine.access -> RO, port"},
    {"BrokenNodesFailAlone",
     "<Integer Name='A'><pValue>Missing</pValue></Integer><Integer Name='OverA'><pValue>A</pValue></Integer>"
     "<Integer Name='B'><Value>twelve</Value></Integer><Integer Name='NoValue'/>"
     "<IntReg Name='NoPort'><Address>0</Address><Length>1</Length></IntReg>"
     "<IntReg Name='WrongPort'><Address>0</Address><Length>1</Length><pPort>Fine</pPort></IntReg>"
     "<IntSwissKnife Name='K'><Formula>1 +</Formula></IntSwissKnife>"
     "<Integer Name='Text'><pValue>S</pValue></Integer><String Name='S'><Value>x</Value></String>"
     "<Integer Name='Fine'><Value>4</Value><pInvalidator>Missing</pInvalidator><pSelected>Missing</pSelected></Integer>"
     "<Integer Name='Fine'><Value>5</Value></Integer><Integer><Value>1</Value></Integer>"
     "<Novelty Name='N'><Value>1</Value></Novelty><Integer Name='Odd'><Novelty/><Value>1</Value></Integer>",
     "A -> RuntimeException, A.access -> NI, OverA.access -> NI, OverA -> AccessException, B -> RuntimeException, "
     "NoValue -> AccessException, NoPort.access -> NI, NoPort -> AccessException, WrongPort -> RuntimeException, "
     "K -> RuntimeException, Text -> RuntimeException, Fine -> 4, Odd -> 1, N -> no such node"},
};

class Conformance : public testing::TestWithParam<Case> {};

TEST_P(Conformance, Steps) {
    Camera camera(GetParam().nodes);
    for (const auto &[action, expected] : Pairs(GetParam().steps, ", "))
        EXPECT_EQ(PerformCaught(camera, action), expected) << action;
}

INSTANTIATE_TEST_SUITE_P(GenApi, Conformance, testing::ValuesIn(cases),
                         [](const auto &instance) { return instance.param.name; });

} // namespace
