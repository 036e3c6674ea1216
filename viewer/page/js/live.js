/**
 * Cameras and growing files: waits for the server to say that there is more.
 *
 * @import {Session} from './types.js'
 * @import {Stage} from './stage.js'
 */
import { fetchSession } from './api.js';

/**
 * @param {Stage} stage
 * @param {Session} session changed in place
 * @param {() => void} changed called when sources have changed
 */
export async function followLive(stage, session, changed) {
  const { store } = stage;
  let failures = 0;
  while (session.sources.some(({ live }) => live) && failures < 5) {
    try {
      const next = await fetchSession(session.revision ?? 0);
      failures = 0;
      if (next.revision === session.revision) {
        continue;
      }
      const { source, frame } = store.state.settings;
      const before = session.sources[source];
      const now = next.sources[source];
      session.sources = next.sources;
      session.revision = next.revision;
      changed();
      // Who looks at the last frame goes on to the next; a camera has no other.
      if (now && before && now.frames > before.frames && (now.kind === 'camera' || frame >= before.frames - 1)) {
        store.update({ settings: { ...store.state.settings, frame: now.frames - 1 } });
      }
    } catch {
      failures += 1;
      await new Promise((resolve) => setTimeout(resolve, 1000));
    }
  }
}
