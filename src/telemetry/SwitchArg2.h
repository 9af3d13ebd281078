#pragma once

#include <tclap/CmdLine.h>

#include <string>

namespace qve {

/// A switch that is given with a value, `--emitutc on`, so that it can be turned off as well as on. Its description
/// tells what holds without it. After the parse, check() hands the value on.
class SwitchArg2 : public TCLAP::ValueArg<std::string> {
public:
    /// `target` outlives this; its present value is the default.
    SwitchArg2(const std::string& name, const std::string& description, bool& target, TCLAP::CmdLine& line)
        : ValueArg("", name, description + (target ? " (on)" : " (off)"), false, "", "on|off", line),
          m_target(target) {}

    /// Throws TCLAP::ArgParseException for a value that is neither on nor off.
    void check() const {
        if (!isSet()) return;
        const std::string& value = getValue();
        const bool on = value == "on" || value == "true" || value == "1";
        if (!on && value != "off" && value != "false" && value != "0") {
            throw TCLAP::ArgParseException("expected on or off, got \"" + value + "\"", toString());
        }
        m_target = on;
    }

private:
    bool& m_target;
};

}  // namespace qve
