import { BridgeError, type BridgeClient, IMMsgType, writeBody } from "@imsdkbridge/client";

/**
 * The body of a typed text, its shortcuts turned into emotions; on a host that cannot do that they
 * stay text. What looks like a token arrives as it was typed.
 */
export async function withEmotions(client: BridgeClient, text: string): Promise<string> {
  try {
    const request = { type: IMMsgType.kMsgText, value: text, jvale: "" };
    const answer = await client.singlemsg.ConvertMsgText2Emotion(request);
    return answer.value;
  } catch (error) {
    if (error instanceof BridgeError && error.kind === "failed") {
      return writeBody([{ kind: "text", text }]);
    }
    throw error;
  }
}
