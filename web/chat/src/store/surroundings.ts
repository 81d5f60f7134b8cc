import type { LocalFile, ReadFile } from "./attachments.ts";
import type { PageFocus } from "./chat_window.ts";
import type { Emotion } from "./emotions.ts";
import type { TabChannel } from "./tabs.ts";

/** What the store needs of the page around it. */
export interface Surroundings<F extends LocalFile = LocalFile> {
  /** Lives as long as the tab. */
  storage: Storage;
  /** Outlives the tab. */
  memory: Storage;
  focus: PageFocus;
  tabs: TabChannel;
  readFile: ReadFile<F>;
  emotions: () => Promise<readonly Emotion[]>;
}
