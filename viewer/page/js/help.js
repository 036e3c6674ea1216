/**
 * The list of keys.
 *
 * @import {Command} from './commands.js'
 */
import { byId, make } from './elements.js';

/** @param {Command[]} commands */
export function fillHelp(commands) {
  const groups = new Map();
  for (const command of commands) {
    if (command.shown) {
      groups.set(command.group, [...(groups.get(command.group) ?? []), command]);
    }
  }
  byId('keys', HTMLElement).replaceChildren(...[...groups].map(([group, list]) =>
    make('section', {}, [
      make('h3', {}, [group]),
      make('dl', {}, list.flatMap((/** @type {Command} */ { shown, label }) => [make('dt', {}, [make('kbd', {}, [shown])]), make('dd', {}, [label])])),
    ])));
}
