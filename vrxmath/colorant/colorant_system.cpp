#include <vrxmath/colorant/colorant_system.h>

#include <vrxmath/foundation/archive_frame.h>
#include <vrxmath/foundation/record_archive.h>

namespace vrx {

// The components' fields in archive order. Components have no archive form of their own, so this stands apart
// from them.
struct ComponentArchive {
  static constexpr std::size_t kMinComponentBytes = 94;

  static void Serialize(CArchive& archive, CComponent& component) {
    SerializeFields(archive, component.description_, component.name_, component.id_, component.amountA_,
                    component.amountB_, component.factor_, component.refA_, component.refB_, component.refC_,
                    component.kind_, component.flags_, component.scaleA_, component.scaleB_,
                    component.scaleC_, component.classCode_, component.option_, component.currentLevel_,
                    component.modified_, component.levels_);
  }

  static void Serialize(CArchive& archive, CColorant& colorant) {
    Serialize(archive, static_cast<CComponent&>(colorant));
    SerializeFields(archive, colorant.valueA_, colorant.percent_, colorant.attributes_);
  }

  static void Serialize(CArchive& archive, CResin& resin) {
    Serialize(archive, static_cast<CComponent&>(resin));
    SerializeFields(archive, resin.resinCode_, resin.resinValue_, resin.additives_, resin.triple_[0],
                    resin.triple_[1], resin.triple_[2], resin.resinRef_);
    CTopOff& topOff = resin.topOff_;
    SerializeFields(archive, topOff.text, topOff.valueA, topOff.valueB, topOff.valueC, topOff.mode);
  }

  template <class COMPONENT>
  static void SerializeAll(CArchive& archive, CArrayVarex<COMPONENT>& components) {
    SerializeList(archive, components, kMinComponentBytes,
                  [](CArchive& one, COMPONENT& component) { Serialize(one, component); });
  }
};

namespace {

constexpr ArchiveFormat kFormat = {0x53585256, 1};  // "VRXS"

// The geometries with their selection and the current one, which the form of CAngles leaves out.
void SerializeAngles(CArchive& archive, CAngles& angles) {
  angles.Serialize(archive);
  CString selection;
  for (int32_t i = 0; i < angles.GetCount(); ++i) {
    uint8_t selected = angles.IsSelected(i) ? 1 : 0;
    SerializeField(archive, selected);
    selection += selected != 0 ? u"1," : u"0,";
  }
  int32_t current = angles.GetCurrent();
  SerializeField(archive, current);
  if (archive.IsLoading()) {
    angles.SelectFromText(selection);
    angles.SetCurrent(current);
  }
}

}  // namespace

void CColorantSystemComponent::Serialize(CArchive& archive) {
  SerializeFields(archive, componentId, kind, position, enabled);
}

bool CColorantSystemData::operator==(const CColorantSystemData& other) const {
  return NearlyEqual(k1, other.k1) && NearlyEqual(k2, other.k2) && NearlyEqual(valueA, other.valueA) &&
         count == other.count && NearlyEqual(valueB, other.valueB) && flagsA == other.flagsA &&
         flagsB == other.flagsB && opticalModel == other.opticalModel && name == other.name &&
         angles == other.angles && attributeLabels == other.attributeLabels && textsA == other.textsA &&
         textsB == other.textsB && numbersA == other.numbersA && numbersB == other.numbersB &&
         numbersC == other.numbersC && colorants == other.colorants && resins == other.resins &&
         componentsA == other.componentsA && componentsB == other.componentsB;
}

void CColorantSystemData::Serialize(CArchive& archive) {
  SerializeFramed(archive, kFormat, *this,
                  [](CArchive& inner, CColorantSystemData& system) { system.SerializeFields(inner); });
}

void CColorantSystemData::SerializeFields(CArchive& archive) {
  vrx::SerializeFields(archive, k1, k2, valueA, count, valueB, flagsA, flagsB, opticalModel, name);
  SerializeAngles(archive, angles);
  vrx::SerializeFields(archive, attributeLabels, textsA, textsB, numbersA, numbersB, numbersC);
  ComponentArchive::SerializeAll(archive, colorants);
  ComponentArchive::SerializeAll(archive, resins);
  vrx::SerializeFields(archive, componentsA, componentsB);
}

}  // namespace vrx
