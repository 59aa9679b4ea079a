// The settings as a form: its fields from a table, what they hold, and who hears of a change.

import { el } from './dom';
import { type System } from './engine';
import { type Settings, USUAL } from './settings';
import { type Key, t } from './texts';

type Name = Exclude<keyof Settings, 'illuminants' | 'lenient' | 'force' | 'mode'>;
interface Field {
  name: Name;
  label: Key;
  group: Key;
  mode?: Settings['mode'];
  options?: [value: string, text: string][];
  numeric?: boolean;
}

const fields = (systems: System[]): Field[] => [
  { name: 'system', label: 'differenceSystem', group: 'differenceSystem', options: systems.map(({ name, title }) => [name, title]) },
  { name: 'parameters', label: 'parameters', group: 'differenceSystem' },
  { name: 'observer', label: 'observer', group: 'illuminants', options: ['10', '2'].map((degrees) => [degrees, t('degrees', degrees)]) },
  { name: 'tolerance', label: 'tolerance', group: 'limits', mode: 'judge' },
  { name: 'limits', label: 'components', group: 'limits', mode: 'judge' },
  { name: 'verdict', label: 'verdict', group: 'limits', mode: 'judge', options: (['worse', 'total', 'box', 'ellipse'] as const).map((word) => [word, t(word)]) },
  { name: 'warning', label: 'warning', group: 'limits', mode: 'judge', numeric: true },
  { name: 'matchTolerance', label: 'matchTolerance', group: 'limits', mode: 'match', numeric: true },
  { name: 'most', label: 'most', group: 'limits', mode: 'match', numeric: true },
  { name: 'top', label: 'top', group: 'limits', mode: 'match', numeric: true },
  { name: 'specular', label: 'specular', group: 'limits', mode: 'match', options: [['', t('scaleOpen')], ['included', t('included')], ['excluded', t('excluded')]] },
  { name: 'pairing', label: 'pairing', group: 'files', mode: 'judge', options: [['', t('pairingOpen')], ['pairs', t('pairs')], ['first', t('first')], ['nearest', t('nearest')]] },
  { name: 'scale', label: 'scale', group: 'files', options: [['', t('scaleOpen')], ['percent', t('percent')], ['fraction', t('fraction')]] },
  { name: 'idColumn', label: 'idColumn', group: 'files' },
  { name: 'title', label: 'reportTitle', group: 'reportOf' },
  { name: 'customer', label: 'reportCustomer', group: 'reportOf' },
  { name: 'lot', label: 'reportLot', group: 'reportOf' },
  { name: 'approval', label: 'reportApproval', group: 'reportOf' },
  { name: 'author', label: 'reportAuthor', group: 'reportOf' },
];

export class Form {
  private readonly controls = new Map<Name, HTMLInputElement | HTMLSelectElement>();
  private readonly byMode: { element: HTMLElement; mode: string }[] = [];
  private readonly illuminants: HTMLInputElement[] = [];

  constructor(
    place: HTMLElement,
    private readonly systems: System[],
    illuminants: [code: string, description: string][],
    private readonly settings: Settings,
    private readonly changed: () => void,
  ) {
    const groups = new Map<Key, HTMLFieldSetElement>();
    for (const field of fields(systems)) {
      let group = groups.get(field.group);
      if (!group) {
        group = el('fieldset', {}, el('legend', {}, t(field.group)));
        groups.set(field.group, group);
        place.append(group);
        if (field.group === 'illuminants') group.append(this.checks(illuminants));
      }
      group.append(this.field(field));
    }
    this.show();
  }

  /** Puts the settings into the form. */
  show(): void {
    for (const [name, control] of this.controls) control.value = this.settings[name];
    for (const check of this.illuminants) check.checked = this.settings.illuminants.includes(check.value);
    for (const { element, mode } of this.byMode) element.hidden = mode !== this.settings.mode;
    const usual = this.systems.find(({ name }) => name === this.settings.system)?.parameters ?? [];
    const parameters = this.controls.get('parameters') as HTMLInputElement;
    parameters.placeholder = usual.map(({ value }) => value.toFixed(2)).join(':');
    parameters.disabled = usual.length === 0;
    const names = usual.map(({ name }) => name).join(':');
    parameters.parentElement!.firstElementChild!.textContent = t('parameters') + (names ? ` ${names}` : '');
  }

  private field({ name, label, mode, options, numeric }: Field): HTMLElement {
    const control = options
      ? el('select', {}, ...options.map(([value, text]) => el('option', { value }, text)))
      : el('input', numeric ? { inputmode: 'decimal' } : {});
    control.name = name;
    this.controls.set(name, control);
    control.addEventListener(options ? 'change' : 'input', () => {
      (this.settings as unknown as Record<string, string>)[name] = control.value.trim();
      if (name === 'system') this.settings.parameters = '';
      this.show();
      this.changed();
    });
    const element = el('label', { class: 'field' }, el('span', {}, t(label)), control);
    if (mode) this.byMode.push({ element, mode });
    return element;
  }

  // In the order in which they are offered; judgements list them in the order of the settings.
  private checks(illuminants: [code: string, description: string][]): HTMLElement {
    const common = illuminants.filter(([code]) => USUAL.illuminants.includes(code));
    const box = (entries: [string, string][]) => el('div', { class: 'checks' }, ...entries.map(([code, description]) => {
      const check = el('input', { type: 'checkbox', value: code, name: 'illuminant' });
      check.addEventListener('change', () => {
        const others = this.settings.illuminants.filter((one) => one !== code);
        this.settings.illuminants = check.checked ? [...others, code] : others;
        this.changed();
      });
      this.illuminants.push(check);
      return el('label', { title: description }, check, ` ${code}`);
    }));
    const rest = illuminants.filter((entry) => !common.includes(entry));
    return el('div', {}, box(common), el('details', {}, el('summary', {}, '…'), box(rest)));
  }
}
