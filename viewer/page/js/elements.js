/** Finding and making elements. */

/**
 * @template {HTMLElement} T
 * @param {string} id
 * @param {new () => T} type
 * @returns {T}
 */
export function byId(id, type) {
  const found = document.getElementById(id);
  if (!(found instanceof type)) {
    throw new Error(`The page has no ${type.name} ${id}`);
  }
  return found;
}

/**
 * @template {keyof HTMLElementTagNameMap} K
 * @param {K} tag
 * @param {Record<string, string>} attributes
 * @param {(Node | string)[]} children
 * @returns {HTMLElementTagNameMap[K]}
 */
export function make(tag, attributes = {}, children = []) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    element.setAttribute(name, value);
  }
  element.append(...children);
  return element;
}
