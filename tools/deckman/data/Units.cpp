#include "data/Units.h"

#include <array>

namespace Deckman {

namespace {

struct Dimension
{
    std::string_view name;
    std::array<std::string_view, 4> units; // by UnitSystem
};

constexpr Dimension dimensions[] = {
    {"length", {"m", "ft", "cm", "m"}},
    {"area", {"m2", "ft2", "cm2", "m2"}},
    {"volume", {"m3", "ft3", "cc", "m3"}},
    {"time", {"day", "day", "hr", "day"}},
    {"angle", {"deg", "deg", "deg", "deg"}},
    {"mass", {"kg", "lb", "g", "kg"}},
    {"density", {"kg/m3", "lb/ft3", "g/cc", "kg/m3"}},
    {"pressure", {"bar", "psi", "atm", "atm"}},
    {"temperature", {"degC", "degF", "degC", "degC"}},
    {"absoluteTemperature", {"K", "degR", "K", "K"}},
    {"permeability", {"mD", "mD", "mD", "mD"}},
    {"transmissibility", {"cP.rm3/day/bar", "cP.rb/day/psi", "cP.rcc/hr/atm", "cP.rm3/day/atm"}},
    {"viscosity", {"cP", "cP", "cP", "cP"}},
    {"compressibility", {"1/bar", "1/psi", "1/atm", "1/atm"}},
    {"surfaceTension", {"N/m", "lbf/in", "dyn/cm", "N/m"}},
    {"interfacialTension", {"dyn/cm", "dyn/cm", "dyn/cm", "dyn/cm"}},
    {"liquidSurfaceVolume", {"sm3", "stb", "scc", "sm3"}},
    {"gasSurfaceVolume", {"sm3", "Mscf", "scc", "sm3"}},
    {"reservoirVolume", {"rm3", "rb", "rcc", "rm3"}},
    {"liquidSurfaceRate", {"sm3/day", "stb/day", "scc/hr", "sm3/day"}},
    {"gasSurfaceRate", {"sm3/day", "Mscf/day", "scc/hr", "sm3/day"}},
    {"reservoirRate", {"rm3/day", "rb/day", "rcc/hr", "rm3/day"}},
    {"gasOilRatio", {"sm3/sm3", "Mscf/stb", "scc/scc", "sm3/sm3"}},
    {"oilGasRatio", {"sm3/sm3", "stb/Mscf", "scc/scc", "sm3/sm3"}},
    {"liquidVolumeFactor", {"rm3/sm3", "rb/stb", "rcc/scc", "rm3/sm3"}},
    {"gasVolumeFactor", {"rm3/sm3", "rb/Mscf", "rcc/scc", "rm3/sm3"}},
    {"molarMass", {"kg/kmol", "lb/lbmol", "g/mol", "kg/kmol"}},
    {"mole", {"kmol", "lbmol", "mol", "kmol"}},
    {"moleRate", {"kmol/day", "lbmol/day", "mol/hr", "kmol/day"}},
    {"energy", {"kJ", "Btu", "J", "kJ"}},
    {"heatCapacity", {"kJ/kg/K", "Btu/lb/degR", "J/g/K", "kJ/kg/K"}},
    {"volumetricHeatCapacity", {"kJ/rm3/K", "Btu/ft3/degR", "J/rcc/K", "kJ/rm3/K"}},
    {"thermalConductivity", {"kJ/m/day/K", "Btu/ft/day/degR", "J/cm/hr/K", "kJ/m/day/K"}},
    {"concentration", {"kg/sm3", "lb/stb", "g/scc", "kg/sm3"}},
    {"diffusivity", {"m2/day", "ft2/day", "cm2/hr", "m2/day"}},
    {"dFactor", {"day/sm3", "day/Mscf", "hr/scc", "day/sm3"}},
};

std::string_view UnitOfOne(std::string_view dimension, UnitSystem system)
{
    for (const Dimension& known : dimensions) {
        if (known.name == dimension) return known.units[static_cast<std::size_t>(system)];
    }
    return dimension;
}

} // namespace

std::string UnitOf(std::string_view dimension, UnitSystem system)
{
    std::string unit;
    while (!dimension.empty()) {
        const std::size_t end = dimension.find_first_of("*/");
        unit += UnitOfOne(dimension.substr(0, end), system);
        if (end == std::string_view::npos) break;
        unit += dimension[end] == '*' ? '.' : '/';
        dimension.remove_prefix(end + 1);
    }
    return unit;
}

} // namespace Deckman
