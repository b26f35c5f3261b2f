#!/usr/bin/env python3
"""Writes a camera description of the size of a real one: about 1.2 MB and 3,000 nodes of all types, a lock that 1,000
features look at, and chains of 20 references. Usage: make_large_camera.py OUTPUT"""
import sys

GROUPS = 168
CHAINS = 5
CHAIN_LENGTH = 20
TEXT = "Sets this parameter."


class Writer:
    def __init__(self):
        self.lines = []
        self.address = 0x10000
        self.features = []

    def node(self, kind, name, *elements, feature=False, lock=False):
        texts = [f"<ToolTip>{name}: {TEXT}</ToolTip>", f"<Description>{name}: {TEXT}</Description>",
                 f"<DisplayName>{name}</DisplayName>", "<Visibility>Expert</Visibility>"]
        if lock:
            texts.append("<pIsLocked>TLParamsLocked</pIsLocked>")
        self.lines.append(f'  <{kind} Name="{name}" NameSpace="Custom">')
        self.lines.extend(f"    {element}" for element in (*texts, *elements))
        self.lines.append(f"  </{kind}>")
        if feature:
            self.features.append(name)

    def register(self, kind, name, length, *elements):
        self.node(kind, name, f"<Address>0x{self.address:X}</Address>", f"<Length>{length}</Length>",
                  "<AccessMode>RW</AccessMode>", "<pPort>Device</pPort>", *elements, "<Endianess>BigEndian</Endianess>"
                  if kind not in ("StringReg", "Register") else "")
        self.address += (length + 3) // 4 * 4

    def group(self, i):
        first = len(self.features)
        n = f"{i:03}"
        self.register("IntReg", f"WidthReg{n}", 4, "<Cachable>WriteThrough</Cachable>", "<Sign>Unsigned</Sign>")
        self.node("IntSwissKnife", f"WidthMax{n}", f'<pVariable Name="OFFSET">OffsetReg{n}</pVariable>',
                  "<Formula>4096 - (OFFSET &amp; 0xFF) * 2</Formula>")
        self.register("MaskedIntReg", f"OffsetReg{n}", 4, "<LSB>31</LSB>", "<MSB>16</MSB>", "<Sign>Signed</Sign>",
                      f"<pInvalidator>Mode{n}</pInvalidator>")
        self.node("Integer", f"Width{n}", f"<pValue>WidthReg{n}</pValue>", "<Min>0</Min>", f"<pMax>WidthMax{n}</pMax>",
                  "<Inc>2</Inc>", feature=True, lock=True)
        self.node("IntConverter", f"Offset{n}", "<FormulaTo>FROM / 2</FormulaTo>", "<FormulaFrom>TO * 2</FormulaFrom>",
                  f"<pValue>OffsetReg{n}</pValue>", feature=True, lock=True)
        self.register("FloatReg", f"GainReg{n}", 4)
        self.node("Float", f"Gain{n}", f"<pValue>GainReg{n}</pValue>", "<Min>-10.0</Min>", "<Max>10.0</Max>",
                  "<Unit>dB</Unit>", feature=True, lock=True)
        self.node("Converter", f"Exposure{n}", f'<pVariable Name="BASE">WidthReg{n}</pVariable>',
                  "<FormulaTo>FROM / (BASE + 1)</FormulaTo>", "<FormulaFrom>TO * (BASE + 1)</FormulaFrom>",
                  f"<pValue>WidthReg{n}</pValue>", "<Unit>us</Unit>", "<Slope>Increasing</Slope>", feature=True, lock=True)
        self.node("SwissKnife", f"Rate{n}", f'<pVariable Name="EXP">Exposure{n}</pVariable>',
                  "<Formula>EXP = 0 ? 0 : 1000000.0 / EXP</Formula>", feature=True)
        entries = "".join(
            f'<EnumEntry Name="Mode{e}"><DisplayName>Mode {e}</DisplayName><Value>{e}</Value></EnumEntry>' for e in range(4))
        self.node("Enumeration", f"Mode{n}", entries, f"<pValue>ModeReg{n}</pValue>", f"<pSelected>Width{n}</pSelected>",
                  feature=True, lock=True)
        self.register("IntReg", f"ModeReg{n}", 4, "<PollingTime>1000</PollingTime>")
        self.node("Boolean", f"Enable{n}", f"<pValue>FlagHigh{n}</pValue>", feature=True, lock=True)
        self.lines.append(f'  <StructReg Comment="Flags{n}"><Address>0x{self.address:X}</Address><Length>4</Length>'
                          "<AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess>"
                          f'<StructEntry Name="FlagHigh{n}"><Bit>0</Bit></StructEntry>'
                          f'<StructEntry Name="FlagLow{n}"><LSB>31</LSB><MSB>24</MSB></StructEntry></StructReg>')
        self.address += 4
        self.node("Command", f"Start{n}", f"<pValue>FlagLow{n}</pValue>", "<CommandValue>1</CommandValue>", feature=True)
        self.register("StringReg", f"NameReg{n}", 16)
        self.node("String", f"Name{n}", f"<pValue>NameReg{n}</pValue>", feature=True)
        self.register("Register", f"Table{n}", 64)
        features = "".join(f"<pFeature>{f}</pFeature>" for f in self.features[first:])
        self.node("Category", f"Group{n}", features)

    def chain(self, c):
        for i in range(CHAIN_LENGTH - 1):
            self.node("Integer", f"Chain{c:02}_{i:02}", f"<pValue>Chain{c:02}_{i + 1:02}</pValue>", feature=i == 0)
        self.node("IntReg", f"Chain{c:02}_{CHAIN_LENGTH - 1:02}", f"<Address>{0x8000 + 4 * c}</Address>",
                  '<IntSwissKnife Name="K"><pVariable Name="S">Selector</pVariable><Formula>S * 0x100</Formula></IntSwissKnife>',
                  '<pIndex Offset="4">Selector</pIndex>', "<Length>4</Length>", "<AccessMode>RW</AccessMode>",
                  "<pPort>Device</pPort>", "<Endianess>BigEndian</Endianess>")

    def document(self):
        self.node("Integer", "TLParamsLocked", "<Value>0</Value>")
        self.node("Integer", "Selector", "<Value>0</Value>", "<Max>3</Max>", "<Min>0</Min>")
        self.node("Node", "Plain")
        for i in range(GROUPS):
            self.group(i)
        for c in range(CHAINS):
            self.chain(c)
        self.node("Category", "Root", "".join(f"<pFeature>Group{i:03}</pFeature>" for i in range(GROUPS)))
        self.lines.append('  <Port Name="Device" NameSpace="Standard"/>')
        return ('<?xml version="1.0" encoding="utf-8"?>\n'
                '<RegisterDescription ModelName="Large" VendorName="Synthetic" SchemaMajorVersion="1" '
                'SchemaMinorVersion="1" SchemaSubMinorVersion="0">\n' + "\n".join(self.lines) +
                "\n</RegisterDescription>\n")


with open(sys.argv[1], "w", encoding="utf-8") as output:
    output.write(Writer().document())
