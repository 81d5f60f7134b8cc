import { BridgeError, type BridgeClient, IMMsgType } from "@imsdkbridge/client";

/** Turns typed shortcuts into emotions; a host that cannot do that gets the text as it was typed. */
export async function withEmotions(client: BridgeClient, text: string): Promise<string> {
  try {
    const request = { type: IMMsgType.kMsgText, value: text, jvale: "" };
    const answer = await client.singlemsg.ConvertMsgText2Emotion(request);
    return answer.value || text;
  } catch (error) {
    if (error instanceof BridgeError && error.kind === "failed") return text;
    throw error;
  }
}
