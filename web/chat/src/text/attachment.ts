import { IMMsgType } from "@imsdkbridge/client";
import { sizeText } from "./fold.ts";

/** The largest file that can be sent, in bytes. */
export const largestFile = 32 * 1024 * 1024;

/** Kinds of pictures that every browser shows. */
const pictureTypes = /^image\/(png|jpeg|gif|webp|bmp)$/;

/** As what a file is sent. */
export function typeOfFile(type: string): IMMsgType {
  return pictureTypes.test(type) ? IMMsgType.kMsgPicture : IMMsgType.kMsgFile;
}

/** Why a file cannot be sent; empty when it can. */
export function refusalOf(file: { name: string; size: number }): string {
  if (file.size === 0) return `${file.name} is empty, or a folder.`;
  if (file.size <= largestFile) return "";
  return `${file.name} is ${sizeText(file.size)}. At most ${sizeText(largestFile)} can be sent.`;
}
