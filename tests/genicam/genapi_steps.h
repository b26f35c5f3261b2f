#pragma once

#include "genapi_support.h"

namespace GenApiTest {

using namespace GenApi;

inline std::string Join(const FeatureList_t &list) {
    std::string text;
    for (IValue *const value : list)
        text += std::string(text.empty() ? "" : " ") + value->GetNode()->GetName().c_str();
    return text;
}

inline EAccessMode ModeNamed(const std::string &text) {
    for (const EAccessMode mode : {NI, NA, WO, RO, RW})
        if (text == AccessModeText(mode))
            return mode;
    return _UndefinedAccesMode;
}

template <class Number> std::string LimitOf(const Number &number, const std::string &which) {
    std::ostringstream text;
    text << (which == "min" ? number->GetMin() : which == "max" ? number->GetMax() : number->GetInc());
    return text.str();
}

inline std::string AskNode(INode *node, const std::string &what) {
    FeatureList_t list;
    if (what == "access")
        return AccessModeText(node->GetAccessMode());
    if (what == "min" || what == "max" || what == "inc")
        return CIntegerPtr(node) ? LimitOf(CIntegerPtr(node), what) : LimitOf(CFloatPtr(node), what);
    if (what == "selected")
        CSelectorPtr(node)->GetSelectedFeatures(list);
    else if (what == "selecting")
        CSelectorPtr(node)->GetSelectingFeatures(list);
    else if (what == "features")
        CCategoryPtr(node)->GetFeatures(list);
    else if (what == "length")
        return std::to_string(CStringPtr(node)->GetMaxLength());
    else if (what == "address")
        return std::to_string(CRegisterPtr(node)->GetAddress());
    else if (what == "done")
        return CCommandPtr(node)->IsDone() ? "yes" : "no";
    else if (what == "cached")
        return CValuePtr(node)->IsValueCacheValid() ? "yes" : "no";
    else if (what == "caching")
        return std::to_string(node->GetCachingMode());
    else if (what == "invalidate")
        node->InvalidateNode();
    else if (what == "fresh")
        return CValuePtr(node)->ToString(false, true).c_str();
    else if (what == "symbolics") {
        StringList_t symbolics;
        CEnumerationPtr(node)->GetSymbolics(symbolics);
        std::string text;
        for (const gcstring &symbolic : symbolics)
            text += std::string(text.empty() ? "" : " ") + symbolic.c_str();
        return text;
    } else if (what.substr(0, 7) == "impose ")
        node->ImposeAccessMode(ModeNamed(what.substr(7)));
    else
        throw std::logic_error("unknown question " + what);
    return Join(list);
}

/// One action on a camera and its answer: "Node" reads its text, "Node=text" sets it, "Node()" executes, "Node.access",
/// ".min", ".max", ".inc", ".symbolics", ".selected", ".selecting", ".features", ".length", ".address", ".cached",
/// ".caching" and so on ask for these; "Node.impose XX" and "Node.invalidate" change a node; "port" takes the list of
/// port accesses; "port XX" sets the port's mode; "fill A HEX" changes the device; "poll N".
inline std::string Perform(Camera &camera, const std::string &action) {
    std::istringstream words(action);
    std::string verb, first, second;
    words >> verb >> first >> second;
    if (action == "port")
        return camera.port.TakeLog();
    if (verb == "port")
        camera.port.mode = ModeNamed(first);
    else if (verb == "fill")
        camera.port.Fill(std::stoll(first, nullptr, 16), second);
    else if (verb == "poll")
        camera.map._Poll(std::stoll(first));
    else {
        const std::size_t end = action.find_first_of("=.(");
        INode *const node = camera[action.substr(0, end).c_str()];
        if (node == nullptr)
            return "no such node";
        if (end == std::string::npos)
            return CValuePtr(node)->ToString().c_str();
        if (action[end] == '=')
            CValuePtr(node)->FromString(action.substr(end + 1));
        else if (action[end] == '(')
            CCommandPtr(node)->Execute();
        else
            return AskNode(node, action.substr(end + 1));
    }
    return "";
}

/// The same; the answer to what throws is the type of the exception.
inline std::string PerformCaught(Camera &camera, const std::string &action) {
    try {
        return Perform(camera, action);
    } catch (const GenICam::GenericException &e) {
        return TypeOf(e);
    }
}

} // namespace GenApiTest
