-- The wires of the MIRTA console in Wireshark: every field of the status datagrams of CML75, KVS and KVK, the
-- text frames and the constants. Copy it into Wireshark's folder of personal Lua plugins (Help, About, Folders), or
--     wireshark -X lua_script:mirta.lua FILE.pcap
-- Filters go by the names of docs/protocols.md: cml75.LX1 > 100, kvs.ND1State == 4, mirta.command contains "MOVE".

local rows = {}
-- made from docs/protocols.md by make.sh
rows.cml75 = {
    {0, "u16", "", "signature 0x5650"},
    {2, "2 bytes", "", "not read"},
    {4, "u32", "ChannelState1, ChannelState2, ChannelState3", "state of an NC channel: 1 idle, 2 ready, 3 running, 6 error, 8 reset, 9 loading, 12 ready to start, 13 ready to go on"},
    {16, "u32", "ChannelMode1, ChannelMode2, ChannelMode3", "mode of an NC channel: 1 manual, 4 MDI, 5 automatic, 14 WCS"},
    {28, "f32", "LX1, LX2, LY, A, B, C, D, U1, U2, V", "positions of the drives, mm or deg"},
    {68, "f32", "X, Z, PHI", "positions of the virtual axes"},
    {80, "i32", "StateLX1, StateLX2, StateLY, StateA, StateB, StateC, StateD, StateU1, StateU2, StateV", "diagnostic codes of the drives, 0xF2026 for F2026"},
    {120, "u32", "VirtualState", "virtual axes: 0 off, 1 drives ready, 2 on, 3 fault, 4 warning"},
    {124, "f32", "MinLimLX, MinLimLY, MinLimA, MinLimB, MinLimC, MinLimD, MinLimU, MinLimV, MinLimX, MinLimZ, MinLimPHI", "lower soft limits; LX and U stand for both axes of their pair"},
    {168, "f32", "MaxLimLX, MaxLimLY, MaxLimA, MaxLimB, MaxLimC, MaxLimD, MaxLimU, MaxLimV, MaxLimX, MaxLimZ, MaxLimPHI", "upper soft limits"},
    {212, "4 x u32", "Message", "message slots; the signal carries the number, not the slot"},
    {228, "u32", "PointNo", "number of the current program point"},
    {232, "u32", "CNCError", "error code of the controller, 0 for none"},
    {236, "u32", "DoorState", "door"},
    {240, "u32", "TrModuleState", "transport module"},
    {244, "u32", "DrivePowerState", "drive power"},
    {248, "u32", "LightState", "light"},
    {252, "u32", "PortPultRegime", "regime of the remote panel's port"},
    {256, "u32", "AlarmState", "emergency buttons, ropes"},
    {260, "u8", "LXmin, LYmin, Amin, Bmin, Cmin, Dmin, Umin, Vmin, Xmin, Zmin, PHImin", "lower limit switches; X, Z, PHI: flags of the virtual axes"},
    {271, "u8", "LXmax, LYmax, Amax, Bmax, Cmax, Dmax, Umax, Vmax, Xmax, Zmax, PHImax", "upper limit switches"},
    {282, "u8", "DrivesOn, TransOn, AxisMoving, PultOn, KeyAccess, DrivesLock, SpiralLock", "TransOn: transformed mode, the virtual axes move. KeyAccess: key switch"},
    {289, "2 bytes", "", "not read"},
    {291, "u8", "SpiralPower, DrivesPower", "true is the healthy state"},
    {293, "u8", "PhaseAlarm", "fault of the 380 V phases"},
    {294, "2 bytes", "", "up to the multiple of four"},
}
rows.kvs = {
    {0, "u16", "", "signature 0x5650"},
    {2, "2 bytes", "", "not read"},
    {4, "i32", "NL1State, NL1Power, NL1Thermal, NL1LockOn, NL1LockOff, NL1Error", "pump: state, power, overheat, lock words for switching on and off, error"},
    {28, "6 x i32", "NL2…", "the same"},
    {52, "6 x i32", "NZ1…", "the same"},
    {76, "6 x i32", "NZ2…", "the same"},
    {100, "6 x i32", "ND1…", "the same"},
    {124, "6 x i32", "NW2…", "the same"},
    {148, "i32", "VP1State, VP1Opened, VP1Closed, VP1LockOn, VP1LockOff", "valve: state, limits, lock words for opening and closing"},
    {168, "5 x i32", "VP2…", "the same"},
    {188, "5 x i32", "VP3…", "the same"},
    {208, "5 x i32", "VP5…", "the same"},
    {228, "5 x i32", "VP6…", "the same"},
    {248, "5 x i32", "VP7…", "the same"},
    {268, "i32", "PTState, LEDState, SpiralState", "gauge unit, indicator, spiral"},
    {280, "i32", "AlgNumber, AlgState, AlgTime", "this controller's own algorithm"},
    {292, "u8", "PT1Valid, PT2Valid, PT3Valid", "validity of the pressures"},
    {295, "u8", "PowerPT, Power380V, Power110V, Power24V, PowerDischarge, PowerFan", "powers: gauges, mains, flow sensors, fan"},
    {301, "u8", "EmStop, RopeAlarm", "emergency stop, rope"},
    {303, "u8", "PowerSHUK, PowerKVK", "powers of the control cabinet and of KVK"},
    {305, "u8", "DoorClosed", "door closed"},
    {306, "2 bytes", "", "not read"},
    {308, "f64", "PT1, PT2, PT3", "pressures, Pa"},
    {332, "f32", "TempCorpND, TempOilND", "case and oil of ND1, °C"},
    {340, "f32", "Temp1 to Temp8", "cooling water, °C"},
    {372, "f32", "Disch1 to Disch8", "cooling water, l/min"},
}
rows.kvk = {
    {0, "u16", "", "signature 0x5650"},
    {2, "2 bytes", "", "not read"},
    {4, "i32", "VP4State, VP4Opened, VP4Closed, VP4LockOn, VP4LockOff", "valve, as above"},
    {24, "5 x i32", "VP8…", "the same"},
    {44, "i32", "DoorState, DoorUnpressed, DoorPressed, DoorLockOn, DoorLockOff", "the door's pressing: state, limits, lock words for releasing and pressing"},
    {64, "f64", "PT4, PT5", "pressures, Pa; PT5 is the chamber"},
    {80, "u8", "PT4Valid, PT5Valid", "their validity"},
    {82, "u8", "PressureOK", "pressure in the line in order"},
    {83, "u8", "NP1Power, NW1Power", "compressor, water pump"},
    {85, "u8", "DrivesLock, SpiralLock, ShutdownLock", "what the vacuum forbids the rest of the machine"},
    {88, "u32", "AlgNumber, AlgTime, AlgRun", "regime as in `ALG(n)`, 0xFFFFFFFF for an abnormal end; its time in s, its state: 1 running, 2 done, otherwise not started"},
    {100, "4 bytes", "", "not read"},
    {104, "i32", "BKUValid", "not zero while the unit BKU answers; also the validity of PT6"},
    {108, "i32", "StateVPT, StateVE, StateTMN", "states of VPT, VE1, TMN"},
    {120, "u32", "StateNET, StateACC, StateMP", "BKU's own"},
    {132, "u32", "StateLocks", "lock word of BKU: bit 0 VPT may not close, bit 1 VE1 may not open, bit 2 VE1 may not close, bits 3 and 4 TMN may not start"},
    {136, "f32", "PT6", "gun pressure, Pa"},
    {140, "f32", "TMNFreq", "frequency of TMN"},
}
rows.constant = {
    {0, "i32", "id", "number of the constant"},
    {4, "f32", "value", "value"},
    {8, "char[84]", "text", "description in Windows-1251, ended by a zero byte"},
}
local states = "0 off or closed, 1 on or open, 2 going off or closing, 3 going on or opening, 4 error"
-- end of what is made

local wires = {
    cml75 = {name = "CML75, motion controller", tcp = 5190, udp = 5191, size = 296},
    kvs = {name = "KVS, vacuum system controller", tcp = 5196, udp = 5197, size = 404, constants = 0x5652},
    kvk = {name = "KVK, chamber controller", tcp = 5198, udp = 5199, size = 144, constants = 0x5651},
}
local text_signature = 0x5650
local types = {
    u8 = {ftypes.UINT8, 1}, u16 = {ftypes.UINT16, 2}, u32 = {ftypes.UINT32, 4}, i32 = {ftypes.INT32, 4},
    f32 = {ftypes.FLOAT, 4}, f64 = {ftypes.DOUBLE, 8},
}

-- "LX1, LX2" as they stand; "Temp1 to Temp8" whole; "NL2…" by the names of the block before with the other stem.
local function names_of(text, block)
    local names = {}
    local stem, from, to = text:match("^(%a+)(%d+) to %a+(%d+)$")
    if stem then
        for i = from, to do names[#names + 1] = stem .. i end
        return names
    end
    stem = text:match("^(.-)…$")
    if stem then
        for _, name in ipairs(block) do names[#names + 1] = stem .. name end
        return names
    end
    for name in text:gmatch("[%w]+") do names[#names + 1] = name end
    return names
end

-- What the names of a block have behind their common stem: NL1State, NL1Power: State, Power.
local function tails_of(names)
    local same = #names[1]
    for _, name in ipairs(names) do
        while name:sub(1, same) ~= names[1]:sub(1, same) do same = same - 1 end
    end
    local tails = {}
    for i, name in ipairs(names) do tails[i] = name:sub(same + 1) end
    return tails
end

-- "mode: 1 manual, 4 MDI" as a table of words; nil where a meaning names no numbers.
local function words_of(meaning)
    local words
    for part in (meaning:match(": *(.*)$") or ""):gmatch("[^,]+") do
        local number, word = part:match("^%s*(%d+) (.+)$")
        if number then
            words = words or {}
            words[tonumber(number)] = word
        end
    end
    return words
end

-- The words of one field: those of pumps and valves, or those of its own row, if all fields there are of one kind.
local function words_for(name, names, meaning)
    if meaning:find("^pump: ") or meaning:find("^valve") or meaning:find("^states of ") then
        return (name:find("State$") or name:find("^State")) and words_of(": " .. states) or nil
    end
    local alike = name:gsub("%d+$", "") == names[1]:gsub("%d+$", "")
    for _, other in ipairs(names) do alike = alike and other:gsub("%d+$", "") == name:gsub("%d+$", "") end
    return alike and words_of(meaning) or nil
end

local function field_of(prefix, name, names, kind, meaning)
    local code = kind == types.i32 or kind == types.u32
    if code and (name:find("Lock") or meaning:find("diagnostic codes")) then -- bits, or known by their hex digits
        return ProtoField.uint32(prefix .. "." .. name, name, base.HEX_DEC, nil, nil, meaning)
    end
    local whole = code or kind == types.u8
    return ProtoField.new(name, prefix .. "." .. name, kind[1], whole and words_for(name, names, meaning) or nil,
                          whole and base.DEC or nil, nil, meaning)
end

-- The fields of a layout, in order of bytes: where, how wide, and as what Wireshark knows them.
local function fields_of(prefix, proto_fields)
    local fields, known, tails, meaning_before = {}, {}, {}, ""
    for _, row in ipairs(rows[prefix]) do
        local times, kind = row[2]:match("^(%d+) x (%w+)$")
        kind = types[kind or row[2]]
        if kind and row[3] ~= "" then
            local names = names_of(row[3], tails)
            local meaning = row[4] == "the same" and meaning_before or row[4]
            if #names > 1 and meaning == row[4] then tails, meaning_before = tails_of(names), meaning end
            for i = 1, math.max(#names, tonumber(times or 0)) do
                local name = names[i] or names[1]
                if not known[name] then
                    known[name] = field_of(prefix, name, names, kind, meaning)
                    table.insert(proto_fields, known[name])
                end
                table.insert(fields, {field = known[name], at = row[1] + (i - 1) * kind[2], size = kind[2]})
            end
        end
    end
    return fields
end

local common = Proto("mirta", "MIRTA frame")
local f = {
    signature = ProtoField.uint16("mirta.signature", "Signature", base.HEX),
    length = ProtoField.uint16("mirta.length", "Length", base.DEC),
    command = ProtoField.string("mirta.command", "Command of the console"),
    text = ProtoField.string("mirta.text", "Text of the controller"),
    constant = ProtoField.none("mirta.constant", "Constant"),
    id = ProtoField.int32("mirta.constant.id", "Number", base.DEC),
    value = ProtoField.float("mirta.constant.value", "Value"),
    description = ProtoField.string("mirta.constant.text", "Description"),
}
for _, field in pairs(f) do table.insert(common.fields, field) end
local strange_signature = ProtoExpert.new("mirta.strange", "The signature is not the controller's",
                                          expert.group.PROTOCOL, expert.severity.ERROR)
local strange_size = ProtoExpert.new("mirta.size", "The size is not the controller's: it ends the console",
                                     expert.group.MALFORMED, expert.severity.ERROR)
common.experts = {strange_signature, strange_size}

local record_size = rows.constant[3][1] + tonumber(rows.constant[3][2]:match("%d+"))

local function add_constants(tree, body)
    for at = 0, body:len() - record_size, record_size do
        local record = tree:add(f.constant, body(at, record_size))
        record:add_le(f.id, body(at + rows.constant[1][1], 4))
        record:add_le(f.value, body(at + rows.constant[2][1], 4))
        local text = body(at + rows.constant[3][1], record_size - rows.constant[3][1])
        record:add_packet_field(f.description, text, ENC_WINDOWS_1251)
        record:set_text(string.format("Constant %d = %g", body(at, 4):le_int(), body(at + 4, 4):le_float()))
    end
end

local function add_frame(wire, frame, info, tree)
    local signature, to_console = frame(0, 2):le_uint(), info.src_port == wire.tcp
    local branch = tree:add(common, frame())
    branch:add_le(f.signature, frame(0, 2))
    info.cols.protocol = wire.short
    if frame:len() < 4 or (signature ~= text_signature and signature ~= wire.constants) then
        branch:add_proto_expert_info(strange_signature)
        info.cols.info = "strange bytes"
        return frame:len()
    end
    branch:add_le(f.length, frame(2, 2))
    if frame:len() == 4 then
        info.cols.info = "empty text"
    elseif signature == text_signature then
        branch:add_packet_field(to_console and f.text or f.command, frame(4), ENC_UTF_8)
        info.cols.info = (to_console and "< " or "> ") .. frame(4):string(ENC_UTF_8) .. " "
    else
        add_constants(branch, frame(4))
        info.cols.info = string.format("< %d constants", math.floor((frame:len() - 4) / record_size))
    end
    info.cols.info:fence() -- a packet may carry several
    return frame:len()
end

for prefix, wire in pairs(wires) do
    local proto = Proto(prefix, wire.name)
    local list = {}
    local fields = fields_of(prefix, list)
    proto.fields = list
    wire.short = prefix:upper()

    local function status(datagram, info, tree)
        local branch = tree:add(proto, datagram())
        info.cols.protocol = wire.short
        info.cols.info = "status"
        if datagram:len() ~= wire.size then
            branch:add_proto_expert_info(strange_size)
            return
        end
        if datagram(0, 2):le_uint() ~= text_signature then branch:add_proto_expert_info(strange_signature) end
        for _, field in ipairs(fields) do branch:add_le(field.field, datagram(field.at, field.size)) end
    end

    -- What begins with another signature is no frame: it is shown to the end of its packet.
    local function length(frame, _, at)
        local signature = frame(at, 2):le_uint()
        if signature ~= text_signature and signature ~= wire.constants then return frame:len() - at end
        return 4 + frame(at + 2, 2):le_uint()
    end

    function proto.dissector(bytes, info, tree)
        if info.port_type == 3 then -- UDP
            status(bytes, info, tree)
        else
            dissect_tcp_pdus(bytes, tree, 4, length, function(frame, i, t) return add_frame(wire, frame, i, t) end)
        end
    end
    DissectorTable.get("udp.port"):add(wire.udp, proto)
    DissectorTable.get("tcp.port"):add(wire.tcp, proto)
end
