/**
 * All frames of all files as one row, which the slider runs along.
 *
 * @import {Session, Settings, Source} from './types.js'
 */

/** @param {Session} session */
export function frameCount(session) {
  return session.sources.reduce((sum, source) => sum + Math.max(1, source.frames), 0);
}

/** @param {Session} session @param {Settings} settings */
export function placeOf(session, settings) {
  return session.sources.slice(0, settings.source).reduce((sum, source) => sum + Math.max(1, source.frames), settings.frame - session.sources[settings.source].first);
}

/** The number of the frame in the first place: of several files the places are numbered. @param {Session} session */
export const firstNumber = ({ sources }) => (sources.length === 1 ? sources[0].first : 0);

/**
 * @param {Session} session
 * @param {number} place limited to what there is
 * @returns {{source: number, frame: number}}
 */
export function frameAt(session, place) {
  let left = Math.min(frameCount(session) - 1, Math.max(0, place));
  for (const [source, { first, frames }] of session.sources.entries()) {
    if (left < Math.max(1, frames)) {
      return { source, frame: first + left };
    }
    left -= Math.max(1, frames);
  }
  return { source: 0, frame: 0 };
}

/** Whether its frames are told apart by numbers. @param {Source} source */
export const isNumbered = ({ kind, frames }) => kind !== 'file' || frames > 1;

/** Whether there is anything to look at yet. @param {Session} session @param {Settings} settings */
export const hasFrame = (session, settings) => (session.sources[settings.source]?.frames ?? 0) > 0;

/**
 * Of files the first, of what comes just now the newest, which is followed.
 *
 * @param {Source} source
 */
export function firstFrame({ kind, live, first, frames }) {
  return kind !== 'file' && live && frames > 0 ? first + frames - 1 : first;
}

/** The newest frame of a side's source. @param {Session} session @param {Settings} settings */
export function newestFrame(session, { source }) {
  const { first, frames } = session.sources[source];
  return first + Math.max(1, frames) - 1;
}

/** Whether a side shows the newest frame of what sends more. @param {Session} session @param {Settings} settings */
export const isFollowing = (session, settings) =>
  session.sources[settings.source].live && settings.frame >= newestFrame(session, settings);

/**
 * The names of the sources without the folders that all share.
 *
 * @param {Session} session
 */
export function shortNames({ sources }) {
  const names = sources.map(({ name }) => name);
  const [first] = names;
  let shared = first ? Math.max(first.lastIndexOf('/'), first.lastIndexOf('\\')) + 1 : 0;
  while (shared > 0 && !names.every((name) => name.startsWith(first.slice(0, shared)))) {
    shared = Math.max(first.lastIndexOf('/', shared - 2), first.lastIndexOf('\\', shared - 2)) + 1;
  }
  return names.map((name) => name.slice(shared));
}
