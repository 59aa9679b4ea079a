// Elements from plain data. Whatever comes from a file goes in as text.

type Attributes = Record<string, string | boolean | ((event: Event) => void)>;

export function el<K extends keyof HTMLElementTagNameMap>(
  tag: K,
  attributes: Attributes = {},
  ...children: (Node | string)[]
): HTMLElementTagNameMap[K] {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (typeof value === 'function') element.addEventListener(name, value);
    else if (value === true) element.setAttribute(name, '');
    else if (value !== false) element.setAttribute(name, value);
  }
  element.append(...children);
  return element;
}

export function byId<T extends HTMLElement = HTMLElement>(id: string): T {
  return document.getElementById(id) as T;
}

export function button(text: string, click: () => void, main = false): HTMLButtonElement {
  return el('button', { type: 'button', click, ...(main ? { class: 'main' } : {}) }, text);
}

export function save(name: string, bytes: Uint8Array, type: string): void {
  const address = URL.createObjectURL(new Blob([bytes as BlobPart], { type }));
  el('a', { href: address, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(address), 10_000);
}
